#include "platform/desktop/Display.h"

#include <cstdlib>
#include <string_view>
#include <xcb/xcb.h>

namespace quillet::platform {

namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && !std::string_view(value).empty();
}

bool x11Answers() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

}  // namespace

bool hasDisplay() {
    // A platform that is asked for by name is the user's own choice.
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") ||
           (isSet("DISPLAY") && x11Answers());
}

}  // namespace quillet::platform
