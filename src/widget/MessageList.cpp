#include "widget/MessageList.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

#include "util/Tarno.h"

namespace quillet::MessageList {

namespace {

// The standard-folder code of each stored segment: "Inbox", "To Do", "Memo", and a fourth that no
// segment of the header stores.
constexpr std::int64_t kFolderOfSegment[] = {1, 11, 12, 13};

struct Place {
    std::uint64_t key;  // smaller for a newer message
    ExtensionMessage* record;
};

using Places = std::vector<Place>;

std::uint64_t sortKey(const ExtensionMessage& message) {
    constexpr double kOldest = -std::numeric_limits<double>::infinity();
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;
    const double date = message.date().value_or(kOldest) + 0.0;  // no negative zero
    const auto bits = std::bit_cast<std::uint64_t>(date);
    return (bits & kSign) != 0 ? bits : ~(bits | kSign);
}

// Radix sort from the lowest digit up; equal keys keep their order. `different` holds the bits in
// which keys differ. The dates of a store differ in few bits, which makes this several times faster
// than comparing.
void sortByKey(Places& places, std::uint64_t different) {
    constexpr unsigned kBits = 11;
    constexpr std::size_t kDigits = std::size_t{1} << kBits;
    Places sorted(different != 0 ? places.size() : 0);
    while (different != 0) {
        const auto shift = static_cast<unsigned>(std::countr_zero(different));
        const auto digitOf = [shift](std::uint64_t key) {
            return static_cast<std::size_t>(key >> shift) % kDigits;
        };
        std::array<std::size_t, kDigits> ends{};
        for (const Place& place : places) {
            ++ends[digitOf(place.key)];
        }
        std::exclusive_scan(ends.begin(), ends.end(), ends.begin(), std::size_t{0});
        for (const Place& place : places) {
            sorted[ends[digitOf(place.key)]++] = place;
        }
        places.swap(sorted);
        different &= ~(std::uint64_t{kDigits - 1} << shift);
    }
}

Places sortedPlaces(const RecordBlock& block) {
    Places places;
    places.reserve(block.count());
    std::uint64_t different = 0;
    block.forEach([&](ExtensionMessage& record) {
        const std::uint64_t key = sortKey(record);
        different |= key ^ (places.empty() ? key : places.front().key);
        places.push_back({key, &record});
    });
    sortByKey(places, different);
    return places;
}

// The first kMostRows messages of a standard folder.
Messages firstOfFolder(const Messages& messages, std::int64_t folder) {
    const platform::Number wanted(folder);
    Messages result;
    for (const auto& message : messages) {
        if (message->folderStandardId() == wanted) {
            result.push_back(message);
            if (result.size() == kMostRows) {
                break;
            }
        }
    }
    return result;
}

Messages firstOf(const Messages& messages) {
    const std::size_t count = std::min(messages.size(), kMostRows);
    return {messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace

Messages sortedNewestFirst(const std::shared_ptr<RecordBlock>& block) {
    Messages sorted;
    sorted.reserve(block->count());
    for (const Place& place : sortedPlaces(*block)) {
        sorted.push_back(RecordBlock::handle(block, *place.record));
    }
    return sorted;
}

bool isEqual(const Messages& left, const Messages& right) {
    return std::equal(left.begin(),
                      left.end(),
                      right.begin(),
                      right.end(),
                      [](const auto& one, const auto& other) { return one->isEqual(other.get()); });
}

ExtensionMessageList toShow(const ExtensionMessageList& all,
                            const ExtensionMessageList& shown,
                            std::int64_t segmented) {
    Messages messages;
    if (segmented == 0) {
        messages = firstOf(*all);
    } else if (segmented >= 1 && segmented <= std::ssize(kFolderOfSegment)) {
        messages = firstOfFolder(*all, kFolderOfSegment[segmented - 1]);
    } else if (shown) {
        messages = firstOf(*shown);
    }
    return std::make_shared<const Messages>(Tarno::Unique(messages));
}

}  // namespace quillet::MessageList
