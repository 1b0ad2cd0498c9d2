#include "mailhost/maildir/Candidates.h"

#include <algorithm>

namespace quillet::mailhost {

namespace {

constexpr std::size_t kCandidatesPerOrder = 200;
constexpr std::int64_t kDay = 86'400;  // seconds

bool passes(const KnownMessage& message, const RowFilter& filter) {
    return !message.isHidden && (!filter.onlyFlagged || message.isFlagged) &&
           (!filter.onlyUnread || !message.isSeen);
}

// Adds the `count` messages with the largest `key`.
template <typename Key>
void addLargest(std::vector<KnownMessage*> messages,
                std::size_t count,
                Key key,
                std::vector<KnownMessage*>& chosen) {
    // A message without the number has no place in this order.
    std::erase_if(messages, [&](const KnownMessage* message) { return key(*message) <= 0; });
    if (messages.size() > count) {
        std::nth_element(
            messages.begin(),
            messages.begin() + static_cast<std::ptrdiff_t>(count),
            messages.end(),
            [&](const auto* one, const auto* other) { return key(*one) > key(*other); });
        messages.resize(count);
    }
    chosen.insert(chosen.end(), messages.begin(), messages.end());
}

}  // namespace

std::int64_t shownDate(const KnownMessage& message, std::int64_t now) {
    const bool canBeTrue = message.date > 0 && message.date <= now + kDay;
    return canBeTrue ? message.date : std::max<std::int64_t>(message.modified, 0);
}

std::vector<KnownMessage*> newestCandidates(std::vector<KnownMessage>& messages,
                                            const RowFilter& filter,
                                            std::int64_t now) {
    std::vector<KnownMessage*> passing;
    for (KnownMessage& message : messages) {
        if (passes(message, filter)) {
            passing.push_back(&message);
        }
    }
    constexpr std::size_t kAll = 3 * kCandidatesPerOrder + kNewestRows;
    if (passing.size() <= kAll) {
        return passing;
    }
    std::vector<KnownMessage*> chosen;
    const auto dateIfRead = [now](const KnownMessage& message) {
        return message.date == KnownMessage::kUnread ? 0 : shownDate(message, now);
    };
    addLargest(
        passing, kCandidatesPerOrder, [](const auto& message) { return message.nameTime; }, chosen);
    addLargest(
        passing, kCandidatesPerOrder, [](const auto& message) { return message.modified; }, chosen);
    addLargest(
        passing, kCandidatesPerOrder, [](const auto& message) { return message.uid; }, chosen);
    addLargest(std::move(passing), kNewestRows, dateIfRead, chosen);
    std::sort(chosen.begin(), chosen.end());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    return chosen;
}

}  // namespace quillet::mailhost
