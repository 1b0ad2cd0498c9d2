#pragma once

#include "host/CommandLine.h"

namespace quillet::host {

// Writes the sample store and tells the widget; the exit status. Needs an application object.
int runWrite(const CommandLine& line);

}  // namespace quillet::host
