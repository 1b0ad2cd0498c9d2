#pragma once

namespace quillet::platform {

// For a program with windows: from now on the event loop runs while the main thread waits for a
// lock for longer than a host usually writes, so that windows, signals and the session bus are
// answered. Blocks of the main queue wait meanwhile. The wait ends when the application is told to
// exit. Main thread only; needs the application object.
void answerDuringLockWaits();

}  // namespace quillet::platform
