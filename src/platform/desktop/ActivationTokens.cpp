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

// Times are of the X server, in milliseconds, of which a token holds 32 bits.
class ActivationTokens::InputClock final : public QObject {
public:
    InputClock() {
        nextTurn_.setSingleShot(true);
        connect(&nextTurn_, &QTimer::timeout, this, [this] { input_ = 0; });
        if (QCoreApplication* application = QCoreApplication::instance()) {
            application->installEventFilter(this);
        }
    }

    // Of the input that is being dealt with. What a screen reader asks for comes without any, and
    // is dated now: servers count as the system does.
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
            if (time != 0) {  // events that the toolkit makes up have none
                input_ = time;
                nextTurn_.start();
            }
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QTimer nextTurn_;          // at once
    std::uint32_t input_ = 0;  // in this turn of the event loop; 0: none
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
