#include "platform/ui/SingleLineText.h"

namespace quillet::platform {

namespace {

bool isBreakOrControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F) || unit == 0x2028 || unit == 0x2029;
}

bool isBidirectionalControl(char16_t unit) {
    return (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069) ||
           unit == 0x200E || unit == 0x200F || unit == 0x061C;
}

// The first few thousand bytes of a text, cut between two characters.
std::string_view firstChunk(std::string_view text) {
    constexpr std::size_t kChunk = 4096;          // bytes
    constexpr std::size_t kLongestCharacter = 4;  // bytes
    if (text.size() <= kChunk) {
        return text;
    }
    std::size_t end = kChunk;
    while (end > kChunk - kLongestCharacter &&
           (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end);
}

}  // namespace

QString singleLineText(std::string_view text) {
    QString line;
    bool afterControl = false;
    while (!text.empty() && line.size() <= kSingleLineLimit) {
        const std::string_view chunk = firstChunk(text);
        text.remove_prefix(chunk.size());
        const QString decoded =
            QString::fromUtf8(chunk.data(), static_cast<qsizetype>(chunk.size()));
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
