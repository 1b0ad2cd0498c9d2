#pragma once

#include <optional>

#include "platform/desktop/Appearance.h"

namespace quillet {

// Runs the panel until the user quits; the exit status. Needs a QApplication. A start that finds
// the panel running already toggles that one and ends at once.
int runPanel(std::optional<platform::Look> look);

}  // namespace quillet
