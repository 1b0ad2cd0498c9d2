#pragma once

#include <QObject>
#include <functional>
#include <optional>

#include "platform/files/FileLock.h"

namespace quillet {

// Lets only one panel of a bundle run in a desktop session. The first start holds a lock in the
// runtime folder, and a name on the session bus whenever there is a bus; later starts ask the owner
// of the name to toggle. Main thread only.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "it.tarno.quillet.Today")

public:
    enum class Claim {
        Alone,        // no other panel is known to run
        Told,         // another process runs one and was told to toggle
        Unreachable,  // another process runs one, but cannot be told
    };

    // `toggle` is called from the event loop when another start asks for it.
    explicit SingleInstance(std::function<void()> toggle);
    ~SingleInstance() override;

    // Once alone, takes the name again on every new connection to the bus, unless somebody else has
    // it by then.
    Claim claim();
    // Whether another start could make this one toggle.
    bool isReachable() const;
    // Releases lock and name before the program ends.
    void release();

    // Called over the bus.
    Q_SLOT void Toggle();

private:
    bool takeLock();
    bool takeName();
    void stay();

    std::function<void()> toggle_;
    std::optional<platform::FileLock> lock_;
    QString connection_;  // the name of the connection on which the name was taken; "": none
};

}  // namespace quillet
