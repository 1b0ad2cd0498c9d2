#include "platform/ui/WindowHints.h"

#include <QGuiApplication>
#include <QRegion>
#include <QTransform>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace quillet::platform {

namespace {

// Null on other window systems.
xcb_connection_t* x11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_window_t nativeWindow(const QWindow& window) {
    return static_cast<xcb_window_t>(window.winId());
}

xcb_atom_t atomNamed(xcb_connection_t* connection, std::string_view name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_rectangle_t nativeRectangle(const QRect& rect) {
    return {static_cast<std::int16_t>(rect.x()),
            static_cast<std::int16_t>(rect.y()),
            static_cast<std::uint16_t>(rect.width()),
            static_cast<std::uint16_t>(rect.height())};
}

}  // namespace

void setInputRegion(QWindow& window, const QRegion& region) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr || xcb_get_extension_data(connection, &xcb_shape_id)->present == 0) {
        return;
    }
    const qreal ratio = window.devicePixelRatio();
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect& rect : QTransform::fromScale(ratio, ratio).map(region)) {
        rectangles.push_back(nativeRectangle(rect));
    }
    xcb_shape_rectangles(connection,
                         XCB_SHAPE_SO_SET,
                         XCB_SHAPE_SK_INPUT,
                         XCB_CLIP_ORDERING_UNSORTED,
                         nativeWindow(window),
                         0,
                         0,
                         static_cast<std::uint32_t>(rectangles.size()),
                         rectangles.data());
    xcb_flush(connection);
}

void leaveOutOfTaskbars(QWindow& window) {
    xcb_connection_t* connection = x11Connection();
    if (connection == nullptr) {
        return;
    }
    const std::array hints{atomNamed(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                           atomNamed(connection, "_NET_WM_STATE_SKIP_PAGER")};
    // When the toolkit shows the window, it adds its own hints to these.
    xcb_change_property(connection,
                        XCB_PROP_MODE_REPLACE,
                        nativeWindow(window),
                        atomNamed(connection, "_NET_WM_STATE"),
                        XCB_ATOM_ATOM,
                        32,
                        static_cast<std::uint32_t>(hints.size()),
                        hints.data());
}

}  // namespace quillet::platform
