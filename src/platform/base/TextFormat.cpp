#include "platform/base/TextFormat.h"

namespace quillet::platform {

namespace {

// Length of the place that starts at `at` with a "%", 0 where there is none.
std::size_t placeLength(std::string_view format, std::size_t at) {
    const std::string_view rest = format.substr(at);
    for (const std::string_view place : {"%@", "%lu", "%ld"}) {
        if (rest.starts_with(place)) {
            return place.size();
        }
    }
    return 0;
}

}  // namespace

std::string formatText(std::string_view format, std::initializer_list<std::string_view> arguments) {
    std::string text;
    const auto* next = arguments.begin();
    for (std::size_t at = 0; at < format.size();) {
        if (format.substr(at).starts_with("%%")) {
            text += '%';
            at += 2;
        } else if (const std::size_t length = placeLength(format, at); length > 0) {
            text += next != arguments.end() ? *next++ : kAbsentText;
            at += length;
        } else {
            text += format[at++];
        }
    }
    return text;
}

}  // namespace quillet::platform
