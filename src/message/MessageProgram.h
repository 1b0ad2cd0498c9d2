#pragma once

#include "message/CommandLine.h"

namespace quillet::message {

// Shows the file until its window is closed. Returns the exit status.
int runMessage(const CommandLine& line, int argc, char** argv);

}  // namespace quillet::message
