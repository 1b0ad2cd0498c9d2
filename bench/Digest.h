#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/plist/Number.h"

namespace quillet::bench {

// One number made of the fields of all messages. Readers list the folders in different orders, so
// messages with equal dates may come in any order; the sum over all messages does not depend on it.
class Digest {
public:
    template <typename... Fields>
    void add(const Fields&... fields) {
        (addField(fields), ...);
    }
    // Ends a message.
    void next() { sum_ += std::exchange(state_, kStart); }
    std::uint64_t value() const { return sum_; }

private:
    static constexpr std::uint64_t kStart = 0xCBF29CE484222325;
    static constexpr std::uint64_t kPrime = 0x100000001B3;

    void addField(std::uint64_t number) { state_ = (state_ ^ number) * kPrime; }
    void addField(double number) { addField(std::bit_cast<std::uint64_t>(number)); }
    void addField(const platform::Number& number) { addField(number.doubleValue()); }
    void addField(std::string_view text) {
        for (const char character : text) {
            addField(static_cast<std::uint64_t>(static_cast<unsigned char>(character)));
        }
        addField(std::uint64_t{text.size()});
    }

    std::uint64_t state_ = kStart;
    std::uint64_t sum_ = 0;
};

}  // namespace quillet::bench
