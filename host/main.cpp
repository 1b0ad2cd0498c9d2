// A sample host application: writes the container that the Today widget reads, and does what the
// widget asks of it.

#include <QCoreApplication>
#include <cstdlib>

#include "host/CommandLine.h"
#include "host/RunCommand.h"
#include "host/WriteCommand.h"

namespace {

using quillet::host::CommandLine;

// The data folder goes by the identifier of the running program.
void applyIdentifier(const CommandLine& line) {
    const bool isRun = line.command == CommandLine::Command::Run;
    if (line.bundleIdentifier || isRun) {
        const std::string& identifier = line.bundleIdentifier.value_or(line.identifier);
        setenv("QUILLET_BUNDLE_IDENTIFIER", identifier.c_str(), 1);
    }
    if (line.container) {
        setenv("QUILLET_CONTAINER", line.container->c_str(), 1);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const auto read = quillet::host::readCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<quillet::platform::EarlyExit>(&read)) {
        return quillet::platform::finish(*exit);
    }
    const auto& line = std::get<CommandLine>(read);
    applyIdentifier(line);
    if (line.command == CommandLine::Command::Run) {
        return quillet::host::runHost(line, argc, argv);
    }
    const QCoreApplication application(argc, argv);  // the session bus needs one
    return quillet::host::runWrite(line);
}
