#pragma once

#include <random>
#include <string>
#include <string_view>

#include "platform/base/Utf8.h"

namespace quillet::test {

// A text of up to 23 characters from all planes of Unicode; about half of them have a meaning in
// URLs.
inline std::string randomText(std::mt19937& random) {
    constexpr std::string_view kOften = "?#&=+% []/:;,@!$'()*\"<>\\^`{|}~\n\r\t.-_aZ09";
    std::string text;
    for (auto left = random() % 24; left > 0; --left) {
        if (random() % 2 == 0) {
            text += kOften[random() % kOften.size()];
            continue;
        }
        const auto code = static_cast<std::uint32_t>(random() % 17 << 16U | (random() & 0xFFFFU));
        char bytes[4];
        text.append(bytes, platform::writeUtf8(code, bytes));
    }
    return text;
}

}  // namespace quillet::test
