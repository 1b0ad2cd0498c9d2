#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/url/URL.h"

namespace quillet::platform {

// Whether the desktop entry IDENTIFIER.desktop is installed, its program is there and takes URLs.
// Main thread only.
bool hasDesktopEntry(std::string_view identifier);

// Starts the command of the installed desktop entry IDENTIFIER.desktop with the URLs, in the
// foreground with the activation token, in the background where it is none. False where there is no
// such entry, it takes no URLs, or its program cannot be started. The bus is not asked, even where
// the entry says that it could. Main thread only.
bool openWithDesktopEntry(std::string_view identifier,
                          std::span<const URL> urls,
                          const std::optional<std::string>& token);

}  // namespace quillet::platform
