#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mailhost/accounts/Configuration.h"

// The values of the configuration file as they stand behind "=". A value, or an item of a list,
// may stand in double quotes; there \" and \\ are the characters themselves. "#" after a blank
// begins a comment.
namespace quillet::mailhost {

inline constexpr std::string_view kConfigurationBlanks = " \t\r\v\f";
// What stands for the flagged messages of the Inbox in the list of folders to do.
inline constexpr std::string_view kFlagged = "flagged";

struct ConfigurationItem {
    std::string text;
    bool isQuoted = false;
};

// The items of a value, or what is wrong with it.
struct ConfigurationItems {
    std::vector<ConfigurationItem> items;
    std::string problem;  // empty: none
};

// One item, in which a comma means nothing.
ConfigurationItems readConfigurationValue(std::string_view value);
// Items with commas between them; there is one at least.
ConfigurationItems readConfigurationList(std::string_view value);
// A command line without its comment, and without the quotes if all of it stands in double quotes.
// Other quotes stay for the shell's rules.
std::string readConfigurationCommand(std::string_view value);

// The item in a form that reads as this text, in quotes if it needs them.
std::string configurationItemText(std::string_view text);
std::string quotedConfigurationItem(std::string_view text);

// The name of a layout in the file, and the layout of a name in any case.
std::string_view layoutName(Layout layout);
std::optional<Layout> layoutOfName(std::string_view name);

}  // namespace quillet::mailhost
