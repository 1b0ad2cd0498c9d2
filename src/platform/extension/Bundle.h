#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// What the running program comes with: its identifier, its texts in the user's language, its
// resource files. Any thread.
//
// Resources are in the folder QUILLET_RESOURCES, else in ../share/quillet-today beside the
// program's folder. Translations are property lists there, translations/<language>.plist: a
// dictionary from key to text. The locale is LC_ALL, LC_MESSAGES or LANG, the first that is set.
// The user's languages are those of LANGUAGE (separated by ":"), then the locale's; none if the
// locale is unset, "C" or "POSIX". For "pt_BR" a text is looked up in "pt_BR" first, then in "pt".
// The keys are English, so languages after English are ignored.
class Bundle {
public:
    // The program's own bundle, created on first use.
    static Bundle& main();

    // Takes resources and languages from the environment as it is now.
    Bundle();
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

    // QUILLET_BUNDLE_IDENTIFIER if it is set (empty: none), else "it.tarno.quillet.today". Reads
    // the environment at each call.
    std::optional<std::string> identifier() const;

    // The text of `key` in the user's language. Without a translation it is `fallback`, or the key
    // if that is empty. For the empty key it is always `fallback`.
    std::string localizedString(std::string_view key, std::string_view fallback = {}) const;

    // The path of a resource file such as "images/w_reply@2x.png", or none if it does not exist.
    std::optional<std::string> pathForResource(std::string_view name) const;

private:
    void addTranslations(const std::string& language);

    std::string resources_;  // path of the folder
    std::map<std::string, std::string, std::less<>> texts_;
};

}  // namespace quillet::platform
