#include "platform/base/TextFormat.h"

namespace quillet::platform {

std::string formatText(std::string_view format, std::initializer_list<std::string_view> arguments) {
    std::string text;
    const auto* next = arguments.begin();
    while (!format.empty()) {
        std::size_t length = 0;
        if (format.starts_with("%@") || format.starts_with("%lu") || format.starts_with("%ld")) {
            text += next != arguments.end() ? *next++ : kAbsentText;
            length = format[1] == '@' ? 2 : 3;
        } else {
            text += format[0];
            length = format.starts_with("%%") ? 2 : 1;
        }
        format.remove_prefix(length);
    }
    return text;
}

}  // namespace quillet::platform
