#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

#include "platform/foundation/FileDescriptor.h"

namespace quillet::host {

// Turns the signals that ask a program to end into a call from the event loop.
class StopSignals {
public:
    // Holds the signals back; before any thread is started, so that all threads do.
    StopSignals();

    // Calls `stop` for each signal, one that came before included. With an application object.
    void connect(std::function<void()> stop);

private:
    platform::FileDescriptor signals_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace quillet::host
