#include "platform/desktop/UserDefaults.h"

#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QString>

#include "platform/plist/Number.h"

namespace quillet::platform {

namespace {

QString keyOf(std::string_view key) {
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

// Whether the toolkit may open the path. It would wait for a FIFO.
bool isFileOrNothing(const QString& path) {
    const QFileInfo found(path);
    return found.isFile() || !found.exists();
}

class StandardUserDefaults final : public UserDefaults {
public:
    std::int64_t integerForKey(std::string_view key) const override {
        if (const auto kept = unsaved_.find(key); kept != unsaved_.end()) {
            return kept->second;
        }
        if (!isFileOrNothing(path())) {
            return 0;
        }
        const QSettings settings(path(), QSettings::IniFormat);
        return integerValueOfText(settings.value(keyOf(key)).toString().toStdString());
    }

    void setInteger(std::int64_t value, std::string_view key) override {
        if (write(value, key)) {
            unsaved_.erase(std::string(key));
        } else {
            unsaved_.insert_or_assign(std::string(key), value);
        }
    }

private:
    static bool write(std::int64_t value, std::string_view key) {
        // The toolkit locks the file with a second file beside it.
        if (!isFileOrNothing(path()) || !isFileOrNothing(path() + QStringLiteral(".lock"))) {
            return false;
        }
        QSettings settings(path(), QSettings::IniFormat);
        settings.setValue(keyOf(key), QVariant::fromValue(qint64{value}));
        settings.sync();
        return settings.status() == QSettings::NoError;
    }

    static QString path() {
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
               QStringLiteral("/quillet/today.ini");
    }

    // Values that could not be written.
    std::map<std::string, std::int64_t, std::less<>> unsaved_;
};

}  // namespace

UserDefaults& UserDefaults::standard() {
    static auto* const defaults = new StandardUserDefaults;
    return *defaults;
}

std::int64_t VolatileUserDefaults::integerForKey(std::string_view key) const {
    const auto found = values_.find(key);
    return found != values_.end() ? found->second : 0;
}

void VolatileUserDefaults::setInteger(std::int64_t value, std::string_view key) {
    values_.insert_or_assign(std::string(key), value);
}

}  // namespace quillet::platform
