#pragma once

#include <optional>

#include "platform/desktop/Appearance.h"

namespace quillet {

// Runs the panel until it is told to end, and ends within a second then; the exit status. Needs a
// QApplication. A start that finds the panel running already toggles that one and ends at once,
// with a line on standard error and status 1 where no session bus leads to that one.
int runPanel(std::optional<platform::Look> look);

}  // namespace quillet
