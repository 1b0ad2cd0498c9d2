#include "platform/desktop/Display.h"

#include <QtGlobal>
#include <xcb/xcb.h>

namespace quillet::platform {

namespace {

bool x11Answers() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

}  // namespace

bool hasDisplay() {
    const auto isSet = [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); };
    // A platform in the environment is the user's own choice.
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") ||
           (isSet("DISPLAY") && x11Answers());
}

}  // namespace quillet::platform
