#include "handoff/StagingFolder.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

#include "handoff/ExtensionUtilities.h"
#include "model/ExtensionUtilities.h"
#include "platform/files/Path.h"

namespace quillet {

bool ExtensionUtilities::namesStagingFolder(std::string_view service) {
    constexpr std::string_view kNot[] = {"", ".", "..", "Today", "Accounts.plist", "Contacts"};
    return std::find(std::begin(kNot), std::end(kNot), service) == std::end(kNot) &&
           service.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

platform::Result<std::string> stagingFolder(std::string_view service) {
    if (!ExtensionUtilities::namesStagingFolder(service)) {
        return platform::posixError(EINVAL, "\"" + std::string(service) + "\" as a staging folder");
    }
    const std::optional<std::string> dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return platform::posixError(ENOENT, "the shared container");
    }
    return platform::Path::appendingPathComponent(*dataFolder, service);
}

}  // namespace quillet
