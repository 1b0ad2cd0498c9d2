#include "message/Texts.h"

#include "platform/base/TextFormat.h"
#include "platform/extension/Bundle.h"

namespace quillet::message {

QString localized(const char* key) {
    return QString::fromStdString(platform::Bundle::main().localizedString(key));
}

QString localized(const char* key, const QString& argument) {
    return QString::fromStdString(platform::formatText(
        platform::Bundle::main().localizedString(key), {argument.toStdString()}));
}

QString isolated(const QString& text) {
    constexpr QChar kFirstStrongIsolate(0x2068);
    constexpr QChar kEndOfIsolate(0x2069);
    return kFirstStrongIsolate + text + kEndOfIsolate;
}

}  // namespace quillet::message
