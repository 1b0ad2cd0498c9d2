#pragma once

namespace quillet::platform {

// Whether there is a display to show windows on. Ask before the application object is made, which
// aborts the program without a display.
bool hasDisplay();

// Whether the desktop blends windows with what is below them, so that a window may have translucent
// parts. Without a compositor these would be black. The answer may change while the program runs.
// Main thread only; needs the application object.
bool isCompositing();

}  // namespace quillet::platform
