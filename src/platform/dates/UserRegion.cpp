#include "platform/dates/UserRegion.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace quillet::platform {

namespace {

// Modifiers that name a script, and how CLDR writes it.
constexpr std::pair<std::string_view, std::string_view> kScripts[] = {
    {"latin", "Latn"},
    {"cyrillic", "Cyrl"},
    {"devanagari", "Deva"},
    {"iqtelif", "Latn"},
};

std::string_view environmentLocale() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && value[0] != '\0') {
            return value;
        }
    }
    return "C";
}

std::string_view scriptOf(std::string_view modifier) {
    for (const auto& [name, script] : kScripts) {
        if (name == modifier) {
            return script;
        }
    }
    return {};
}

}  // namespace

std::string dateLocaleName() {
    const std::string_view locale = environmentLocale();
    const std::string_view base = locale.substr(0, locale.find_first_of(".@"));
    const std::size_t at = locale.find('@');
    const std::string_view modifier =
        at == std::string_view::npos ? std::string_view() : locale.substr(at + 1);
    if (base.empty() || base == "C" || base == "POSIX") {
        return "en_US_POSIX";
    }
    std::string name(base);
    if (const std::string_view script = scriptOf(modifier); !script.empty()) {
        name.insert(std::min(name.find('_'), name.size()), "_" + std::string(script));
    }
    if (modifier.find('=') != std::string_view::npos) {
        name += "@" + std::string(modifier);
    }
    return name;
}

}  // namespace quillet::platform
