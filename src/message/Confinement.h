#pragma once

#include <QTimer>

namespace quillet::message {

// Takes from this process what showing a message does not need: more than 512 MiB of memory, core
// dumps, other programs, and every change of a file or folder (on kernels with Landlock). It keeps
// reading files, and lasts until the process ends. Returns whether the kernel guards files. Without
// effect in builds with sanitizers, whose memory is larger. Call before the application object is
// made, with one thread.
bool confineProcess();

// Ends the process with SIGPROF when it has worked for one second of processor time without coming
// back to the event loop. Waiting does not count. One object at a time; main thread only.
class TurnLimit {
public:
    TurnLimit();
    ~TurnLimit();
    TurnLimit(const TurnLimit&) = delete;
    TurnLimit& operator=(const TurnLimit&) = delete;

    // Grants so many seconds from now to the next turn of the event loop.
    static void grant(int seconds);

private:
    QTimer timer_;
};

}  // namespace quillet::message
