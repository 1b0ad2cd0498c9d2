#pragma once

namespace quillet::platform {

// Whether there is a display that windows can be shown on, asked before the application object is
// made, which would abort the program where there is none.
bool hasDisplay();

}  // namespace quillet::platform
