#include "widget/MessageList.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "util/Tarno.h"

namespace quillet::MessageList {

namespace {

// The standard-folder code that each stored segment shows: "Inbox", "To Do", "Memo", and one that
// no segment of the header leads to.
constexpr std::int64_t kFolderOfSegment[] = {1, 11, 12, 13};

struct Place {
    double date;
    std::size_t index;
};

double sortDate(const ExtensionMessage& message) {
    return message.date().value_or(-std::numeric_limits<double>::infinity());
}

bool isNewer(const Place& left, const Place& right) {
    return left.date > right.date;
}

// The first messages of a standard folder, at most kMostRows: later ones would be cut anyway.
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

Messages sortedNewestFirst(Messages messages) {
    std::vector<Place> places;
    places.reserve(messages.size());
    for (const auto& message : messages) {
        places.push_back({sortDate(*message), places.size()});
    }
    if (std::is_sorted(places.begin(), places.end(), isNewer)) {
        return messages;
    }
    std::stable_sort(places.begin(), places.end(), isNewer);
    Messages sorted;
    sorted.reserve(messages.size());
    for (const Place& place : places) {
        sorted.push_back(std::move(messages[place.index]));
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
