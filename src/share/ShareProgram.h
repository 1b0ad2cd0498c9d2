#pragma once

#include "share/ShareCommandLine.h"

namespace quillet {

// Hands what the command line names to the mail application as a draft, or prints the draft's URL.
// Returns the exit status: 0, or 1 if something could not be shared, which is reported on standard
// error while the rest is shared. Needs an application object, with a display for the clipboard.
int runShare(const ShareCommandLine& line);

}  // namespace quillet
