#include "message/AttachmentName.h"

#include <algorithm>
#include <array>

#include "platform/base/Ascii.h"
#include "platform/base/StandardError.h"
#include "platform/base/Utf8.h"
#include "platform/files/Path.h"

namespace quillet::message {

namespace {

constexpr std::size_t kLongestName = 150;      // bytes
constexpr std::size_t kLongestExtension = 16;  // bytes, with the dot

std::string cutName(const std::string& name) {
    if (name.size() <= kLongestName) {
        return name;
    }
    std::string extension = platform::Path::pathExtension(name);
    extension = extension.empty() || extension.size() >= kLongestExtension ? "" : "." + extension;
    std::size_t end = kLongestName - extension.size();
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return name.substr(0, end) + extension;
}

struct KnownType {
    std::string_view type;
    const char* name;
};

std::string nameByType(std::string_view type) {
    constexpr std::array<KnownType, 8> kTypes{{{"message/rfc822", "message.eml"},
                                               {"image/png", "picture.png"},
                                               {"image/jpeg", "picture.jpg"},
                                               {"image/gif", "picture.gif"},
                                               {"application/pdf", "attachment.pdf"},
                                               {"text/calendar", "calendar.ics"},
                                               {"text/html", "attachment.html"},
                                               {"text/plain", "attachment.txt"}}};
    const auto* const known =
        std::find_if(kTypes.begin(), kTypes.end(), [type](const KnownType& each) {
            return platform::equalsIgnoringAsciiCase(each.type, type);
        });
    return known == kTypes.end() ? "attachment" : known->name;
}

}  // namespace

std::string attachmentName(std::string_view given, std::string_view type) {
    // A subject may hold slashes; a name that does was a path on some system.
    std::string name(given);
    if (type != "message/rfc822") {
        name.erase(0, name.find_last_of("/\\") + 1);
    }
    std::replace(name.begin(), name.end(), '/', '_');
    name = platform::printableLine(name);
    name = platform::trimmingWhitespaceAndNewlines(name);
    name.erase(0, std::min(name.find_first_not_of(". "), name.size()));
    return name.empty() ? nameByType(type) : cutName(name);
}

}  // namespace quillet::message
