#include "mailhost/accounts/FolderRoles.h"

#include <algorithm>
#include <array>
#include <unicode/normalizer2.h>
#include <unordered_map>

#include "mailhost/accounts/FolderRoleNames.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

using RolesByName = std::unordered_map<std::string, FolderRole>;

const RolesByName& rolesByName() {
    static const RolesByName roles = [] {
        RolesByName map;
        for (const RoleNames& entry : folderRoleNames()) {
            for (const std::string_view name : entry.names) {
                map.emplace(foldedName(name), entry.role);
            }
        }
        return map;
    }();
    return roles;
}

FolderRole roleOfFolded(const std::string& folded) {
    const auto found = rolesByName().find(folded);
    return found == rolesByName().end() ? FolderRole::None : found->second;
}

// "[gmail]/x" for the forms that the same folder has on disk, "x" for one below the Inbox.
std::string withUsualPrefix(const std::string& folded) {
    constexpr std::array<std::string_view, 2> kGmail{"[gmail]", "[google mail]"};
    constexpr std::string_view kInbox = "inbox";
    constexpr std::string_view kSeparators = "/.";
    const auto restAfter = [&](std::string_view prefix) -> std::string_view {
        const std::string_view text = folded;
        const bool fits = text.starts_with(prefix) && text.size() > prefix.size() + 1 &&
                          kSeparators.find(text[prefix.size()]) != std::string_view::npos;
        return fits ? text.substr(prefix.size() + 1) : std::string_view();
    };
    for (const std::string_view prefix : kGmail) {
        if (const std::string_view rest = restAfter(prefix); !rest.empty()) {
            return "[gmail]/" + std::string(rest);
        }
    }
    const std::string_view rest = restAfter(kInbox);
    return rest.empty() ? folded : std::string(rest);
}

// The year of "…/2026" or "….2026", and what is before it.
unsigned takeYear(std::string& folded) {
    constexpr std::size_t kDigits = 4;
    if (folded.size() <= kDigits + 1) {
        return 0;
    }
    const std::string digits = folded.substr(folded.size() - kDigits);
    const char separator = folded[folded.size() - kDigits - 1];
    if (!std::all_of(digits.begin(), digits.end(), platform::isAsciiDigit) ||
        (separator != '/' && separator != '.')) {
        return 0;
    }
    folded.resize(folded.size() - kDigits - 1);
    return static_cast<unsigned>(std::stoul(digits));
}

FolderRole roleOfUsual(const std::string& usual) {
    constexpr std::string_view kGmail = "[gmail]/";
    const FolderRole role = roleOfFolded(usual);
    return role == FolderRole::None && usual.starts_with(kGmail)
               ? roleOfFolded(usual.substr(kGmail.size()))
               : role;
}

}  // namespace

std::string foldedName(std::string_view name) {
    UErrorCode failure = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(failure);
    std::string folded;
    if (U_SUCCESS(failure)) {
        const icu::UnicodeString text = icu::UnicodeString::fromUTF8(
            icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
        normalizer->normalize(text, failure).toUTF8String(folded);
    }
    return folded;
}

NamedRole roleOfFolder(std::string_view name) {
    std::string usual = withUsualPrefix(foldedName(name));
    const FolderRole role = roleOfUsual(usual);
    if (role != FolderRole::None) {
        return {role, 0};
    }
    const unsigned year = takeYear(usual);
    return year > 0 && roleOfUsual(usual) == FolderRole::Archive
               ? NamedRole{FolderRole::Archive, year}
               : NamedRole();
}

}  // namespace quillet::mailhost
