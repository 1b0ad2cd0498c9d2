#include "platform/desktop/ActivationTokens.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QInputEvent>
#include <QObject>
#include <QSysInfo>
#include <chrono>
#include <cstdint>

namespace quillet::platform {

// Times are of the X server, in milliseconds, of which a token holds 32 bits.
class ActivationTokens::InputClock final : public QObject {
public:
    InputClock() {
        if (QCoreApplication* application = QCoreApplication::instance()) {
            application->installEventFilter(this);
        }
    }

    std::uint32_t lastInput() const {
        // Input by a screen reader comes without an event. Servers count as the system does.
        return last_ != 0 ? last_
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
            last_ = time != 0 ? time : last_;  // events that the toolkit makes up have none
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::uint32_t last_ = 0;
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
        .arg(clock_->lastInput())
        .toStdString();
}

}  // namespace quillet::platform
