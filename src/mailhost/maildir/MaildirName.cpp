#include "mailhost/maildir/MaildirName.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "mailhost/maildir/Sha256.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

constexpr std::string_view kVersion = "2,";
constexpr std::size_t kIdentifierDigits = 32;
// The fields of a base that belong to the message itself, not to its place.
constexpr std::array<std::string_view, 2> kKeptFields{"S", "W"};
constexpr std::array<std::string_view, 2> kPlaceFields{"U", "FMD5"};

bool isField(std::string_view text, std::string_view name) {
    return text.starts_with(name) && text.substr(name.size()).starts_with('=');
}

// Calls `take` with what comes before the first field, then with each field, without the commas.
template <typename Take>
void forEachPart(std::string_view base, Take take) {
    for (;;) {
        const std::size_t comma = std::min(base.find(','), base.size());
        take(base.substr(0, comma));
        if (comma == base.size()) {
            return;
        }
        base.remove_prefix(comma + 1);
    }
}

std::uint64_t numberAtStart(std::string_view text) {
    std::uint64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() ? number : 0;
}

// A size. Whatever else stands there could make a name too long.
bool isNumber(std::string_view text) {
    constexpr std::size_t kMostDigits = 20;
    return !text.empty() && text.size() <= kMostDigits &&
           std::all_of(text.begin(), text.end(), platform::isAsciiDigit);
}

void appendEscaped(std::string& text, std::string_view host) {
    for (const char character : host) {
        if (character == '/') {
            text += "\\057";
        } else if (character == ':') {
            text += "\\072";
        } else {
            text += character;
        }
    }
}

}  // namespace

MaildirName parseMaildirName(std::string_view fileName) {
    constexpr std::string_view kSeparators = ":;!";
    // Digits and commas may stand in the flags of programs that have flags of their own.
    for (std::size_t at = fileName.rfind(kVersion); at != std::string_view::npos && at > 0;
         at = fileName.rfind(kVersion, at - 1)) {
        const char separator = fileName[at - 1];
        if (kSeparators.find(separator) != std::string_view::npos) {
            return {fileName.substr(0, at - 1), fileName.substr(at + kVersion.size()), separator};
        }
    }
    return {fileName, {}, ':'};
}

std::string stableBase(std::string_view base) {
    std::string stable;
    bool isFirst = true;
    forEachPart(base, [&](std::string_view part) {
        const bool isOfPlace =
            !isFirst && std::any_of(kPlaceFields.begin(),
                                    kPlaceFields.end(),
                                    [part](std::string_view name) { return isField(part, name); });
        if (!isOfPlace) {
            stable.append(isFirst ? "" : ",").append(part);
        }
        isFirst = false;
    });
    return stable;
}

std::string identifierOf(std::string_view base) {
    return "q" + sha256(stableBase(base)).substr(0, kIdentifierDigits);
}

bool isIdentifier(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    return text.size() == kIdentifierDigits + 1 && text.starts_with('q') &&
           text.find_first_not_of(kDigits, 1) == std::string_view::npos;
}

std::optional<std::string_view> fieldOf(std::string_view base, std::string_view name) {
    std::optional<std::string_view> value;
    bool isFirst = true;
    forEachPart(base, [&](std::string_view part) {
        if (!isFirst && !value && isField(part, name)) {
            value = part.substr(name.size() + 1);
        }
        isFirst = false;
    });
    return value;
}

std::uint64_t timeOf(std::string_view base) {
    const std::size_t dot = base.find('.');
    const std::string_view digits = base.substr(0, dot);
    return dot != std::string_view::npos && !digits.empty() &&
                   std::all_of(digits.begin(), digits.end(), platform::isAsciiDigit)
               ? numberAtStart(digits)
               : 0;
}

std::uint64_t uidOf(std::string_view base) {
    return numberAtStart(fieldOf(base, "U").value_or(std::string_view()));
}

std::string newMaildirName(std::string_view oldFileName, const UniqueName& unique) {
    const MaildirName old = parseMaildirName(oldFileName);
    const std::uint64_t time = timeOf(old.base);
    std::string name = time > 0 ? std::to_string(time) : std::to_string(unique.seconds);
    name += ".M" + std::to_string(unique.microseconds) + "P" + std::to_string(unique.process) +
            "Q" + std::to_string(unique.counter) + ".";
    appendEscaped(name, unique.host);
    for (const std::string_view field : kKeptFields) {
        const auto value = fieldOf(old.base, field);
        if (value && isNumber(*value)) {
            name.append(",").append(field).append("=").append(*value);
        }
    }
    return name.append(1, old.separator).append(kVersion).append(old.flags);
}

}  // namespace quillet::mailhost
