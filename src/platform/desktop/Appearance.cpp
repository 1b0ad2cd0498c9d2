#include "platform/desktop/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QMetaObject>
#include <QObject>
#include <QPalette>
#include <QVariant>
#include <optional>
#include <utility>

#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

constexpr QLatin1String kService("org.freedesktop.portal.Desktop");
constexpr QLatin1String kPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String kInterface("org.freedesktop.portal.Settings");
constexpr QLatin1String kLookSpace("org.freedesktop.appearance");
constexpr QLatin1String kLookKey("color-scheme");  // 0: no preference, 1: dark, 2: light
constexpr QLatin1String kMotionSpace("org.gnome.desktop.interface");
constexpr QLatin1String kMotionKey("enable-animations");
constexpr uint kPrefersDark = 1;
constexpr uint kPrefersLight = 2;
constexpr int kMiddleLightness = 128;  // of 0 to 255

// The value inside any number of variants.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

Look lookOfPalette() {
    if (qGuiApp == nullptr) {
        return Look::Light;
    }
    const QColor background = QGuiApplication::palette().color(QPalette::Window);
    return background.lightness() < kMiddleLightness ? Look::Dark : Look::Light;
}

}  // namespace

struct Appearance::State final : public QObject {
    Q_OBJECT

public:
    explicit State(std::function<void()> changed) : changed_(std::move(changed)) {
        if (qGuiApp != nullptr) {
            qGuiApp->installEventFilter(this);
        }
        SessionBus::shared().addObserver(this, [this] { ask(); });
        ask();
        told_ = current();
    }
    ~State() override { SessionBus::shared().removeObserver(this); }

    struct Values {
        Look look = Look::Light;
        bool reducedMotion = false;

        friend bool operator==(const Values&, const Values&) = default;
    };

    Values current() const { return {look_ ? *look_ : lookOfPalette(), reducedMotion_}; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::ApplicationPaletteChange) {
            // The new palette is not in place yet, and the owner is called from the event loop.
            QMetaObject::invokeMethod(this, "tell", Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    // Asks the portal for both settings, without waiting, and subscribes to changes.
    void ask() {
        QDBusConnection bus = SessionBus::shared().connection();
        if (!bus.isConnected()) {
            return;
        }
        // Returns false if the subscription exists already.
        bus.connect(kService,
                    kPath,
                    kInterface,
                    QStringLiteral("SettingChanged"),
                    this,
                    SLOT(settingChanged(QDBusMessage)));
        read(bus, kLookSpace, kLookKey);
        read(bus, kMotionSpace, kMotionKey);
    }

    void read(const QDBusConnection& bus, QLatin1String space, QLatin1String key) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
        call << QString(space) << QString(key);
        auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, space, key] {
            watcher->deleteLater();
            const QDBusMessage answer = watcher->reply();
            if (answer.type() == QDBusMessage::ReplyMessage && !answer.arguments().isEmpty()) {
                take(space, key, unwrapped(answer.arguments().constFirst()));
            }
        });
    }

    Q_SLOT void settingChanged(const QDBusMessage& message) {
        if (message.signature() == QLatin1String("ssv")) {
            const QVariantList arguments = message.arguments();
            take(arguments[0].toString(), arguments[1].toString(), unwrapped(arguments[2]));
        }
    }

    // Takes over a setting. Settings of an unexpected type or name change nothing.
    void take(const QString& space, const QString& key, const QVariant& value) {
        if (space == kLookSpace && key == kLookKey && value.userType() == QMetaType::UInt) {
            const uint preference = value.toUInt();
            look_ = preference == kPrefersDark    ? std::optional(Look::Dark)
                    : preference == kPrefersLight ? std::optional(Look::Light)
                                                  : std::nullopt;
        }
        if (space == kMotionSpace && key == kMotionKey && value.userType() == QMetaType::Bool) {
            reducedMotion_ = !value.toBool();
        }
        tell();
    }

    Q_SLOT void tell() {
        const Values now = current();
        if (std::exchange(told_, now) != now) {
            changed_();
        }
    }

    std::function<void()> changed_;
    std::optional<Look> look_;  // none: as the palette
    bool reducedMotion_ = false;
    Values told_;
};

Appearance::Appearance(std::function<void()> changed)
    : state_(std::make_unique<State>(std::move(changed))) {}

Appearance::~Appearance() = default;

Look Appearance::look() const {
    return state_->current().look;
}

bool Appearance::reducedMotion() const {
    return state_->current().reducedMotion;
}

}  // namespace quillet::platform

#include "Appearance.moc"
