#include <algorithm>
#include <map>

#include "mailhost/maildir/FolderListing.h"
#include "mailhost/maildir/KnownMessages.h"
#include "mailhost/maildir/MessageHeader.h"

#include "platform/base/Ascii.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

constexpr std::size_t kMessagesToAsk = 50;

}  // namespace

std::string commonestDeliveredTo(const std::string& folder) {
    platform::Result<FolderListing> listing = listMailFolder(folder);
    if (!listing) {
        return {};
    }
    KnownMessages messages;
    messages.merge(std::move(listing.value()));
    messages.readTimes(folder);
    std::vector<KnownMessage>& all = messages.all();
    const auto end =
        all.begin() + static_cast<std::ptrdiff_t>(std::min(all.size(), kMessagesToAsk));
    std::partial_sort(all.begin(), end, all.end(), [](const auto& one, const auto& other) {
        return one.modified > other.modified;
    });
    std::map<std::string, std::size_t> counts;
    for (auto message = all.begin(); message != end; ++message) {
        const std::string path =
            platform::Path::appendingPathComponent(folder, messages.fileOf(*message));
        std::string address = readHeader(path).deliveredTo;
        std::transform(address.begin(), address.end(), address.begin(), platform::asciiLowerCase);
        if (!address.empty()) {
            ++counts[address];
        }
    }
    const auto commonest =
        std::max_element(counts.begin(), counts.end(), [](const auto& one, const auto& other) {
            return one.second < other.second;
        });
    return commonest == counts.end() ? std::string() : commonest->first;
}

}  // namespace quillet::mailhost
