#pragma once

#include "host/CommandLine.h"

namespace quillet::host {

// Is the host until the bus ends or a signal asks for the end; the exit status. A start that finds
// the name taken hands its URLs, or an activation, to the program that has it. Makes the
// application object from the arguments of main.
int runHost(const CommandLine& line, int argc, char** argv);

}  // namespace quillet::host
