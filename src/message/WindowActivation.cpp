#include "message/WindowActivation.h"

#include <QGuiApplication>
#include <QWidget>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace quillet::message {

namespace {

constexpr const char* kTokenVariable = "XDG_ACTIVATION_TOKEN";

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    return {reply, &std::free};
}

std::string takeVariable(const char* name) {
    const char* value = std::getenv(name);
    std::string text = value == nullptr ? "" : value;
    unsetenv(name);
    return text;
}

// The X server's time of the click in milliseconds, which ends a startup identifier as "_TIME…"; 0
// where it tells none.
std::uint32_t timeOf(std::string_view startupId) {
    constexpr std::string_view kMark = "_TIME";
    std::uint32_t time = 0;
    const std::size_t mark = startupId.rfind(kMark);
    if (mark != std::string_view::npos) {
        const std::string_view digits = startupId.substr(mark + kMark.size());
        std::from_chars(digits.data(), digits.data() + digits.size(), time);
    }
    return time;
}

// The toolkit would send the time of the last input to this program, which may be long ago.
void activateOnX11(xcb_connection_t* connection, xcb_window_t window, std::uint32_t time) {
    constexpr std::string_view kRequest = "_NET_ACTIVE_WINDOW";
    constexpr std::uint32_t kFromApplication = 1;
    const auto atom = owned(xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(
            connection, 0, static_cast<std::uint16_t>(kRequest.size()), kRequest.data()),
        nullptr));
    const auto geometry =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (!atom || !geometry) {
        return;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atom->atom;
    message.data.data32[0] = kFromApplication;
    message.data.data32[1] = time;
    xcb_send_event(connection,
                   0,
                   geometry->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

}  // namespace

Activation takeActivationOfEnvironment() {
    return {takeVariable(kTokenVariable), takeVariable("DESKTOP_STARTUP_ID")};
}

void bringToFront(QWidget& window, const Activation& activation) {
    window.raise();
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // Offscreen, the interface is there without a connection.
    if (x11 != nullptr && x11->connection() != nullptr) {
        const std::string& id =
            activation.startupId.empty() ? activation.token : activation.startupId;
        activateOnX11(x11->connection(), static_cast<xcb_window_t>(window.winId()), timeOf(id));
        return;
    }
    if (!activation.token.empty()) {
        // Where the toolkit's Wayland side looks for the token that it is to use.
        setenv(kTokenVariable, activation.token.c_str(), 1);
    }
    window.activateWindow();
}

}  // namespace quillet::message
