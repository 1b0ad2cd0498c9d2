#pragma once

#include "share/ShareCommandLine.h"

namespace quillet {

// Hands what the command line names to the mail application as a draft, or prints its URL. The exit
// status: 0, or 1 where something could not be shared, which is told on standard error; what can be
// shared is shared nonetheless. Needs an application object, which shows a display where the
// clipboard is asked for.
int runShare(const ShareCommandLine& line);

}  // namespace quillet
