#include "mailhost/accounts/HomePath.h"

#include <filesystem>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

std::optional<std::string> absolutePath(std::string_view text, const std::string& home) {
    std::string path;
    if (text.starts_with('/')) {
        path = text;
    } else if (text == "~" || text.starts_with("~/")) {
        path = home + std::string(text.substr(1));
    } else {
        return std::nullopt;
    }
    path.erase(path.find_last_not_of('/') + 1);
    return path.empty() ? "/" : path;
}

std::string abbreviatedPath(const std::string& path, const std::string& home) {
    return home.size() > 1 && isAtOrBelow(path, home) ? "~" + path.substr(home.size()) : path;
}

std::string canonicalPath(const std::string& path) {
    std::error_code failure;
    std::string canonical = std::filesystem::weakly_canonical(path, failure).string();
    if (failure) {
        return path;
    }
    // Of a path that does not exist a "/" at its end stays.
    return absolutePath(canonical, "").value_or(path);
}

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/');
}

std::string pathBelow(std::string_view path, std::string_view folder) {
    return std::string(platform::trimmedStart(path.substr(folder.size()), "/"));
}

}  // namespace quillet::mailhost
