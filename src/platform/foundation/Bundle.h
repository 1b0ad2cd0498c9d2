#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// What the running program brings along: its identifier, its texts in the user's language, its
// resource files. Any thread.
class Bundle {
public:
    // The program's own bundle, set up on first use.
    static Bundle& main();

    // QUILLET_BUNDLE_IDENTIFIER when set (empty: none), else "it.tarno.quillet.today". Asked anew
    // at each call.
    std::optional<std::string> identifier() const;

    // The text of `key` in the user's language (LC_ALL, LC_MESSAGES, LANG; a translation for
    // "pt_BR" is looked up before one for "pt"). Without a translation: `fallback`, or the key
    // itself where that is empty. The empty key gives `fallback`.
    std::string localizedString(std::string_view key, std::string_view fallback = {}) const;

    // Path of a resource file such as "images/w_reply@2x.png", or none where it does not exist.
    // Resources lie in QUILLET_RESOURCES, else in ../share/quillet-today beside the program's folder.
    std::optional<std::string> pathForResource(std::string_view name) const;

    Bundle(const Bundle&) = delete;
    Bundle& operator=(const Bundle&) = delete;

private:
    Bundle();
    ~Bundle();
    struct State;
    State* state_;  // lives as long as the program
};

}  // namespace quillet::platform
