#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace quillet::platform {

// The path of an application's object on the session bus, by the rules for desktop entries:
// "/it/tarno/quillet" for "it.tarno.quillet".
inline std::string applicationObjectPath(std::string_view identifier) {
    std::string path = "/" + std::string(identifier);
    std::replace(path.begin(), path.end(), '.', '/');
    std::replace(path.begin(), path.end(), '-', '_');
    return path;
}

}  // namespace quillet::platform
