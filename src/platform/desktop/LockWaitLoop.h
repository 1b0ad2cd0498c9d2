#pragma once

namespace quillet::platform {

// For a program with windows: from now on the event loop goes on while the main thread waits for a
// lock that is held for longer than a host writes, so that windows, signals and the session bus are
// answered. Blocks of the main queue wait meanwhile. A wait is given up when the application is
// told to exit. On the main thread, with an application object.
void answerDuringLockWaits();

}  // namespace quillet::platform
