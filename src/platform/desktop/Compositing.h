#pragma once

namespace quillet::platform {

// Whether the desktop blends windows with what lies behind them, so that a window may have
// translucent parts. Without a compositor they would show as black. Main thread only, after the
// application object exists; may change while the program runs.
bool isCompositing();

}  // namespace quillet::platform
