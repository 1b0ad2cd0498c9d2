#include "platform/desktop/Display.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace quillet::platform {

namespace {

bool x11Answers() {
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

// The compositing manager of the first screen owns this selection.
constexpr std::string_view kCompositorSelection = "_NET_WM_CM_S0";

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

bool hasSelectionOwner(xcb_connection_t* connection, std::string_view name) {
    const auto atom = owned(xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 1, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    if (!atom || atom->atom == XCB_ATOM_NONE) {
        return false;
    }
    const auto owner = owned(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

bool hasDisplay() {
    const auto isSet = [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); };
    // A platform in the environment is the user's own choice.
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") ||
           (isSet("DISPLAY") && x11Answers());
}

bool isCompositing() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Platforms other than X11 always blend. Offscreen, the interface exists without a connection.
    return x11 == nullptr || x11->connection() == nullptr ||
           hasSelectionOwner(x11->connection(), kCompositorSelection);
}

}  // namespace quillet::platform
