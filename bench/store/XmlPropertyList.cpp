#include "bench/store/XmlPropertyList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <unicode/unistr.h>

namespace quillet::test {
namespace {

// `text` with U+FFFD for each character that the format cannot hold.
std::string cleanText(const std::string& text) {
    constexpr char16_t kReplacement = 0xFFFD;
    constexpr char16_t kFirstNonCharacter = 0xFFFE;
    const auto isPlain = [](char byte) { return byte >= ' ' && byte <= '~'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        return text;
    }
    auto units = icu::UnicodeString::fromUTF8(text);
    for (std::int32_t index = 0; index < units.length(); ++index) {
        const char16_t unit = units.charAt(index);
        const bool isBlank = unit == '\t' || unit == '\n' || unit == '\r';
        if ((unit < ' ' && !isBlank) || unit >= kFirstNonCharacter) {
            units.setCharAt(index, kReplacement);
        }
    }
    std::string clean;
    return units.toUTF8String(clean);
}

void appendText(std::string& out, const std::string& text) {
    for (const char byte : cleanText(text)) {
        switch (byte) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '\r':  // a plain one would be read as a line feed
                out += "&#13;";
                break;
            default:
                out += byte;
        }
    }
}

void appendBase64(std::string& out, std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t start = 0; start < bytes.size(); start += 3) {
        const std::string_view group = bytes.substr(start, 3);
        std::uint32_t bits = 0;
        for (std::size_t index = 0; index < 3; ++index) {
            const char byte = index < group.size() ? group[index] : '\0';
            bits = (bits << 8U) | static_cast<unsigned char>(byte);
        }
        for (std::size_t digit = 0; digit < 4; ++digit) {
            const std::size_t value = (bits >> (18 - 6 * digit)) & 0x3FU;
            out += digit <= group.size() ? kDigits[value] : '=';
        }
    }
}

// YYYY-MM-DDTHH:MM:SSZ, held between the years 1 and 9999.
std::string dateText(Date date) {
    using std::chrono::seconds;
    using std::chrono::sys_days;
    using std::chrono::year;
    constexpr sys_days kEpoch = year{2001} / 1 / 1;
    constexpr sys_days kFirst = year{1} / 1 / 1;
    constexpr sys_days kEnd = year{10000} / 1 / 1;
    constexpr auto kLowest = static_cast<double>(seconds(kFirst - kEpoch).count());
    constexpr auto kHighest = static_cast<double>(seconds(kEnd - kEpoch).count() - 1);
    const double held = std::isnan(date.seconds) ? 0 : std::floor(date.seconds);
    const double limited = std::fmin(std::fmax(held, kLowest), kHighest);
    const auto instant = kEpoch + seconds(static_cast<std::int64_t>(limited));
    const auto day = std::chrono::floor<std::chrono::days>(instant);
    const std::chrono::year_month_day calendar(day);
    const std::chrono::hh_mm_ss time(instant - day);
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(),
                                     text.size(),
                                     "%04d-%02u-%02uT%02ld:%02ld:%02ldZ",
                                     static_cast<int>(calendar.year()),
                                     static_cast<unsigned>(calendar.month()),
                                     static_cast<unsigned>(calendar.day()),
                                     static_cast<long>(time.hours().count()),
                                     static_cast<long>(time.minutes().count()),
                                     static_cast<long>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

class Writer {
public:
    explicit Writer(std::string& out) : out_(out) {}

    void write(const Value& value) {
        out_.append(depth_, '\t');
        std::visit(*this, value.content());
    }

    void operator()(const std::string& text) { element("string", text); }
    void operator()(std::int64_t number) { element("integer", std::to_string(number)); }
    void operator()(std::uint64_t number) { element("integer", std::to_string(number)); }
    void operator()(const Uid& uid) { (*this)(Dictionary{{"CF$UID", uid.number}}); }
    void operator()(Null /*null*/) { element("string", ""); }
    void operator()(bool truth) { out_ += truth ? "<true/>\n" : "<false/>\n"; }
    void operator()(const Date& date) { element("date", dateText(date)); }

    void operator()(double real) {
        // The shortest text that reads back the same; not-a-number has no sign there.
        const double written = std::isnan(real) ? std::fabs(real) : real;
        std::array<char, 32> text{};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), written).ptr;
        element("real", std::string(text.data(), end));
    }

    void operator()(const Data& data) {
        out_ += "<data>";
        appendBase64(out_, data.bytes);
        out_ += "</data>\n";
    }

    void operator()(const Array& elements) {
        container("array", elements, [this](const Value& value) { write(value); });
    }

    void operator()(const Dictionary& entries) {
        container("dict", entries, [this](const Entry& entry) {
            const auto& [key, value] = entry;
            out_.append(depth_, '\t');
            element("key", key);
            write(value);
        });
    }

private:
    void element(std::string_view name, const std::string& text) {
        out_.append("<").append(name).append(">");
        appendText(out_, text);
        out_.append("</").append(name).append(">\n");
    }

    template <typename Members, typename WriteMember>
    void container(std::string_view name, const Members& members, WriteMember writeMember) {
        out_.append("<").append(name).append(members.empty() ? "/>\n" : ">\n");
        if (members.empty()) {
            return;
        }
        ++depth_;
        for (const auto& member : members) {
            writeMember(member);
        }
        --depth_;
        out_.append(depth_, '\t').append("</").append(name).append(">\n");
    }

    std::string& out_;
    std::size_t depth_ = 0;
};

}  // namespace

std::string writeXml(const Value& root) {
    std::string out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<plist version=\"1.0\">\n";
    Writer(out).write(root);
    out += "</plist>\n";
    return out;
}

}  // namespace quillet::test
