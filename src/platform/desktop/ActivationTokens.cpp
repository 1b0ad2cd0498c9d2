#include "platform/desktop/ActivationTokens.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QInputEvent>
#include <QObject>
#include <QSysInfo>
#include <QTimer>
#include <chrono>
#include <cstdint>

namespace quillet::platform {

// Remembers the time of the user's last input, in milliseconds of the X server's clock. A token
// holds 32 bits of it.
class ActivationTokens::InputClock final : public QObject {
public:
    InputClock() {
        nextTurn_.setSingleShot(true);
        connect(&nextTurn_, &QTimer::timeout, this, [this] { input_ = 0; });
        if (QCoreApplication* application = QCoreApplication::instance()) {
            application->installEventFilter(this);
        }
    }

    // The time of the input that is being handled. A screen reader acts without input; the current
    // time serves then, since X servers use the system's monotonic clock.
    std::uint32_t inputTime() const {
        return input_ != 0 ? input_
                           : static_cast<std::uint32_t>(
                                 std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now().time_since_epoch())
                                     .count());
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->isInputEvent()) {
            const auto time =
                static_cast<std::uint32_t>(static_cast<QInputEvent*>(event)->timestamp());
            if (time != 0) {  // events that the toolkit synthesizes have no time
                input_ = time;
                nextTurn_.start();
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QTimer nextTurn_;          // fires in the next turn of the event loop
    std::uint32_t input_ = 0;  // the time of this turn's input; 0: none
};

ActivationTokens::ActivationTokens() : clock_(std::make_unique<InputClock>()) {}

ActivationTokens::~ActivationTokens() = default;

std::optional<std::string> ActivationTokens::next() {
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) {
        return std::nullopt;
    }
    return QStringLiteral("quillet-today-%1-%2-%3_TIME%4")
        .arg(QCoreApplication::applicationPid())
        .arg(QSysInfo::machineHostName())
        .arg(++count_)
        .arg(clock_->inputTime())
        .toStdString();
}

}  // namespace quillet::platform
