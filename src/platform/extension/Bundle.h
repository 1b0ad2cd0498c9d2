#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// What the running program brings along: its identifier, its texts in the user's language, its
// resource files. Any thread.
//
// Resources lie in QUILLET_RESOURCES, else in ../share/quillet-today beside the program's folder.
// Translations are the property lists translations/<language>.plist there: a dictionary from key
// to text. The user's languages are those of LANGUAGE (a list with ":"), unless the locale is "C"
// or "POSIX", then that of LC_ALL, LC_MESSAGES or LANG, the first that is set. For "pt_BR" a
// translation for "pt_BR" is looked up before one for "pt". The keys are English, so nothing that
// stands behind English in the user's list is looked at.
class Bundle {
public:
    // The program's own bundle, set up on first use.
    static Bundle& main();

    // A bundle with the resources and the languages that the environment tells now.
    Bundle();
    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

    // QUILLET_BUNDLE_IDENTIFIER when set (empty: none), else "it.tarno.quillet.today". Asked anew
    // at each call.
    std::optional<std::string> identifier() const;

    // The text of `key` in the user's language. Without a translation: `fallback`, or the key
    // itself where that is empty. The empty key gives `fallback`.
    std::string localizedString(std::string_view key, std::string_view fallback = {}) const;

    // Path of a resource file such as "images/w_reply@2x.png", or none where it does not exist.
    std::optional<std::string> pathForResource(std::string_view name) const;

private:
    void addTranslations(const std::string& language);

    std::string resources_;  // path of the folder
    std::map<std::string, std::string, std::less<>> texts_;
};

}  // namespace quillet::platform
