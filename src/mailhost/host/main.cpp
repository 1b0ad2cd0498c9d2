// The host application for mail that lies in Maildir folders.

#include <cstdlib>
#include <malloc.h>

#include "mailhost/host/CommandLine.h"
#include "mailhost/host/MailHostProgram.h"

int main(int argc, char** argv) {
    using namespace quillet;
    // Lists of large folders go back to the system. By default the limit grows with the first one,
    // and later ones stay with the process.
    constexpr int kMapAbove = 128 * 1024;  // bytes
    mallopt(M_MMAP_THRESHOLD, kMapAbove);
    const auto read = mailhost::readCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<platform::EarlyExit>(&read)) {
        return platform::finish(*exit);
    }
    const auto& line = std::get<mailhost::CommandLine>(read);
    // The data folder goes by the identifier of the running program.
    setenv("QUILLET_BUNDLE_IDENTIFIER", line.identifier.c_str(), 1);
    if (line.container) {
        setenv("QUILLET_CONTAINER", line.container->c_str(), 1);
    }
    return mailhost::runMailHost(line, argc, argv);
}
