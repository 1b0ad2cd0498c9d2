#pragma once

#include <optional>

#include "platform/desktop/Appearance.h"

namespace quillet {

// Runs the panel until it is told to end, which takes at most a second; returns the exit status.
// Needs a QApplication. If a panel runs already, that one is toggled over the session bus and this
// start ends at once; without a bus it ends with a line on standard error and status 1.
int runPanel(std::optional<platform::Look> look);

}  // namespace quillet
