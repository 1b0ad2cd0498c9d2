#pragma once

#include <QObject>
#include <functional>

namespace quillet {

// Lets one panel of a bundle run in a desktop session: the first start owns a name on the session
// bus, a later one asks it to toggle. Main thread only.
class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "it.tarno.quillet.Today")

public:
    enum class Role {
        First,    // the name is ours
        Later,    // another process has it and was told to toggle
        Unknown,  // no session bus
    };

    // `toggle` runs, from the event loop, when another start asks for it.
    explicit SingleInstance(std::function<void()> toggle);

    Role claim();
    // Gives the name away, before the program ends.
    static void release();

    // Called over the bus.
    Q_SLOT void Toggle();

private:
    std::function<void()> toggle_;
};

}  // namespace quillet
