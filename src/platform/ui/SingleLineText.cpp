#include "platform/ui/SingleLineText.h"

#include <QStringDecoder>

namespace quillet::platform {

namespace {

bool isBreakOrControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x2028 || unit == 0x2029;
}

bool isBidirectionalControl(char16_t unit) {
    return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069) ||
           unit == 0x200E || unit == 0x200F || unit == 0x061C;
}

}  // namespace

QString singleLineText(std::string_view text) {
    constexpr std::size_t kChunk = 4096;  // bytes
    QStringDecoder decode(QStringDecoder::Utf8);
    QString line;
    bool afterControl = false;
    for (std::size_t start = 0; start < text.size() && line.size() <= kSingleLineLimit;
         start += kChunk) {
        const std::string_view chunk = text.substr(start, kChunk);
        const QString decoded =
            decode(QByteArrayView(chunk.data(), static_cast<qsizetype>(chunk.size())));
        for (const QChar unit : decoded) {
            const bool control = isBreakOrControl(unit.unicode());
            if (control && !afterControl) {
                line += QLatin1Char(' ');
            } else if (!control && !isBidirectionalControl(unit.unicode())) {
                line += unit;
            }
            afterControl = control;
        }
    }
    if (line.size() > kSingleLineLimit) {
        const bool splitsPair = line.at(kSingleLineLimit - 1).isHighSurrogate();
        line.truncate(splitsPair ? kSingleLineLimit - 1 : kSingleLineLimit);
    }
    return line;
}

Qt::LayoutDirection directionOf(const QString& text) {
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

}  // namespace quillet::platform
