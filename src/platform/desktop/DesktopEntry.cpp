#include "platform/desktop/DesktopEntry.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <memory>
#include <utility>

#include "platform/desktop/GioReference.h"
#include "platform/desktop/SessionBus.h"

namespace quillet::platform {

namespace {

// The installed entry without its DBusActivatable key, which GIO would follow without checking
// whether the bus can start the program. Null if it is not installed, its program is missing, or it
// does not take URLs.
Reference<GDesktopAppInfo> entryOf(const std::string& identifier) {
    // The name of an entry is a file name; GIO would also follow a path.
    if (identifier.empty() ||
        identifier.find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
        return nullptr;
    }
    const Reference<GDesktopAppInfo> installed(
        g_desktop_app_info_new((identifier + ".desktop").c_str()));
    if (!installed) {
        return nullptr;
    }
    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(),
                                                                      &g_key_file_unref);
    if (g_key_file_load_from_file(file.get(),
                                  g_desktop_app_info_get_filename(installed.get()),
                                  G_KEY_FILE_NONE,
                                  nullptr) == FALSE) {
        return nullptr;
    }
    g_key_file_remove_key(
        file.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_DBUS_ACTIVATABLE, nullptr);
    Reference<GDesktopAppInfo> entry(g_desktop_app_info_new_from_keyfile(file.get()));
    return entry && g_app_info_supports_uris(G_APP_INFO(entry.get())) != FALSE ? std::move(entry)
                                                                               : nullptr;
}

Reference<GAppLaunchContext> contextOf(const std::optional<std::string>& token) {
    Reference<GAppLaunchContext> context(g_app_launch_context_new());
    for (const char* variable : {"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"}) {
        if (token) {
            g_app_launch_context_setenv(context.get(), variable, token->c_str());
        } else {
            g_app_launch_context_unsetenv(context.get(), variable);
        }
    }
    if (SessionBus::isAddressSettled()) {
        g_app_launch_context_unsetenv(context.get(), "DBUS_SESSION_BUS_ADDRESS");
    }
    return context;
}

// GIO announces launches on a connection of its own. By default its loss would end this program.
Reference<GDBusConnection> harmlessBus() {
    Reference<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (bus) {
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    }
    return bus;
}

}  // namespace

bool hasDesktopEntry(std::string_view identifier) {
    return entryOf(std::string(identifier)) != nullptr;
}

bool openWithDesktopEntry(std::string_view identifier,
                          std::span<const URL> urls,
                          const std::optional<std::string>& token) {
    const auto entry = entryOf(std::string(identifier));
    if (!entry) {
        return false;
    }
    GList* list = nullptr;
    for (const URL& url : urls) {
        list = g_list_append(list, const_cast<char*>(url.absoluteString().c_str()));  // only read
    }
    const std::unique_ptr<GList, decltype(&g_list_free)> owner(list, &g_list_free);
    const auto context = contextOf(token);
    const auto bus = harmlessBus();
    return g_app_info_launch_uris(G_APP_INFO(entry.get()), list, context.get(), nullptr) != FALSE;
}

}  // namespace quillet::platform
