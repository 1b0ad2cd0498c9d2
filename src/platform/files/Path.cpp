#include "platform/files/Path.h"

namespace quillet::platform::Path {

namespace {

// The path without "/" at its end; the root stays "/".
std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') {
        path.remove_suffix(1);
    }
    return path;
}

std::string_view lastComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos || path.size() == 1 ? path : path.substr(slash + 1);
}

std::string_view extensionOf(std::string_view path) {
    const std::string_view name = lastComponent(path);
    const std::size_t dot = name.rfind('.');
    const bool isExtension = dot != std::string_view::npos && dot > 0 && dot + 1 < name.size();
    return isExtension ? name.substr(dot + 1) : std::string_view();
}

}  // namespace

std::string lastPathComponent(std::string_view path) {
    return std::string(lastComponent(path));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
    path = withoutTrailingSlashes(path);
    while (!path.empty() && component.starts_with('/')) {
        component.remove_prefix(1);
    }
    std::string result(path);
    if (!path.empty() && !component.empty() && path.back() != '/') {
        result += '/';
    }
    result += withoutTrailingSlashes(component);
    return result;
}

std::string appendingPathExtension(std::string_view path, std::string_view extension) {
    std::string result(withoutTrailingSlashes(path));
    result += '.';
    result += extension;
    return result;
}

std::string pathExtension(std::string_view path) {
    return std::string(extensionOf(path));
}

std::string deletingPathExtension(std::string_view path) {
    const std::string_view extension = extensionOf(path);
    path = withoutTrailingSlashes(path);
    if (!extension.empty()) {
        path.remove_suffix(extension.size() + 1);
    }
    return std::string(path);
}

}  // namespace quillet::platform::Path
