#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/url/URL.h"

namespace quillet::platform {

// Whether the desktop entry IDENTIFIER.desktop is installed, its program exists and it takes URLs.
// Main thread only.
bool hasDesktopEntry(std::string_view identifier);

// Starts the command of the installed desktop entry IDENTIFIER.desktop with the URLs, in the
// foreground with the activation token, or in the background without one. Returns false if the
// entry does not exist or does not take URLs, or if its program cannot be started. Never uses the
// bus, even if the entry is DBusActivatable. Main thread only.
bool openWithDesktopEntry(std::string_view identifier,
                          std::span<const URL> urls,
                          const std::optional<std::string>& token);

}  // namespace quillet::platform
