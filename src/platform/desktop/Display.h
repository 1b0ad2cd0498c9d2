#pragma once

namespace quillet::platform {

// Whether there is a display to show windows on. Ask before the application object is made, which
// aborts the program without a display.
bool hasDisplay();

}  // namespace quillet::platform
