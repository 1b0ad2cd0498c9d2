#include "platform/extension/Bundle.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "platform/base/Log.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "platform/plist/PropertyList.h"

namespace quillet::platform {

namespace {

constexpr std::string_view kIdentifier = "it.tarno.quillet.today";
constexpr std::string_view kSourceLanguage = "en";

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string resourceFolder() {
    if (const std::string_view folder = variable("QUILLET_RESOURCES"); !folder.empty()) {
        return std::string(folder);
    }
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (program.parent_path().parent_path() / "share" / "quillet-today").string();
}

// The locale without encoding and modifier: "pt_BR" for "pt_BR.UTF-8@x".
std::string_view languageOf(std::string_view locale) {
    return locale.substr(0, locale.find_first_of(".@"));
}

// The user's languages, most preferred first.
std::vector<std::string_view> userLanguages() {
    std::string_view locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.empty()) {
            locale = languageOf(variable(name));
        }
    }
    std::vector<std::string_view> languages;
    if (locale.empty() || locale == "C" || locale == "POSIX") {
        return languages;
    }
    for (std::string_view list = variable("LANGUAGE"); !list.empty();) {
        const std::string_view entry = list.substr(0, list.find(':'));
        languages.push_back(languageOf(entry));
        list.remove_prefix(std::min(entry.size() + 1, list.size()));
    }
    languages.push_back(locale);
    return languages;
}

// Language names come from the environment and become part of a path.
bool isLanguageName(std::string_view name) {
    return !name.empty() && name.find('/') == std::string_view::npos && !name.starts_with('.');
}

}  // namespace

Bundle& Bundle::main() {
    // Never destroyed: texts may be needed until the process ends.
    static auto* const bundle = new Bundle;
    return *bundle;
}

Bundle::Bundle() : resources_(resourceFolder()) {
    for (const std::string_view language : userLanguages()) {
        if (!isLanguageName(language)) {
            continue;
        }
        const std::string_view base = language.substr(0, language.find('_'));
        addTranslations(std::string(language));
        if (base != language) {
            addTranslations(std::string(base));
        }
        if (base == kSourceLanguage) {
            break;
        }
    }
}

// Adds the texts whose keys have no text in a more preferred language.
void Bundle::addTranslations(const std::string& language) {
    const auto path = pathForResource("translations/" + language + ".plist");
    if (!path) {
        return;
    }
    PropertyListDocument document;
    if (const auto error = FileManager::readFile(
            *path, document.bytes(), PropertyListDocument::kMaximumFileSize)) {
        Log::write("Bundle translations %@", {error->description()});
        return;
    }
    if (const auto error = document.parse()) {
        Log::write("Bundle translations %@: %@", {*path, error->description()});
        return;
    }
    const PropertyListValue root = document.root();
    if (root.type() != PropertyListType::Dictionary) {
        Log::write("Bundle translations %@: the root is no dictionary", {*path});
        return;
    }
    for (const auto& [key, text] : root.entries()) {
        if (text.type() == PropertyListType::String) {
            texts_.emplace(key.stringValue(), text.stringValue());
        }
    }
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): asked of a bundle
std::optional<std::string> Bundle::identifier() const {
    const char* given = std::getenv("QUILLET_BUNDLE_IDENTIFIER");
    if (given == nullptr) {
        return std::string(kIdentifier);
    }
    return given[0] != '\0' ? std::optional<std::string>(given) : std::nullopt;
}

std::string Bundle::localizedString(std::string_view key, std::string_view fallback) const {
    if (key.empty()) {
        return std::string(fallback);
    }
    if (const auto found = texts_.find(key); found != texts_.end()) {
        return found->second;
    }
    return std::string(fallback.empty() ? key : fallback);
}

std::optional<std::string> Bundle::pathForResource(std::string_view name) const {
    std::string path = Path::appendingPathComponent(resources_, name);
    return FileManager::fileExists(path) ? std::optional(std::move(path)) : std::nullopt;
}

}  // namespace quillet::platform
