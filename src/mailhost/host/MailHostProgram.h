#pragma once

#include "mailhost/host/CommandLine.h"

namespace quillet::mailhost {

// Does what the command line asks for; the exit status. As the host it runs until the session bus
// ends or a signal asks for the end. Makes the application object from the arguments of main.
int runMailHost(const CommandLine& line, int argc, char** argv);

}  // namespace quillet::mailhost
