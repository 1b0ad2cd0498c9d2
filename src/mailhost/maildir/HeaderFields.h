#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet::mailhost {

// The header at the start of a message, as raw bytes. Lines that are no fields are skipped. It
// reads the bytes that it is given, which have to outlive it. Any thread.
class HeaderFields {
public:
    explicit HeaderFields(std::string_view bytes);

    // The bytes behind the colon of the first field of that name (in any case), folded lines and
    // line breaks included; none if there is no such field.
    std::optional<std::string_view> valueOf(std::string_view name) const;

    // The place behind the line break that comes before the empty line, looked for from `start` on.
    // None if `bytes` has no empty line.
    static std::optional<std::size_t> endIn(std::string_view bytes, std::size_t start = 0);

private:
    std::string_view header_;
};

}  // namespace quillet::mailhost
