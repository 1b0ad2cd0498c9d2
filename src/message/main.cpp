// The window for one message or one draft, for those who have no mail program.

#include "message/CommandLine.h"
#include "message/MessageProgram.h"

int main(int argc, char** argv) {
    using namespace quillet;
    const auto read = message::readCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<platform::EarlyExit>(&read)) {
        return platform::finish(*exit);
    }
    return message::runMessage(std::get<message::CommandLine>(read), argc, argv);
}
