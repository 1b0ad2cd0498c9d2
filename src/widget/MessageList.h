#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "model/RecordBlock.h"

// Orders and chooses messages. Pure functions, any thread.
namespace quillet::MessageList {

using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

inline constexpr std::size_t kMostRows = 10;
// The stored preference that holds the chosen segment: 1 to 3, or 0 when nobody has chosen yet.
inline constexpr std::string_view kSegmentedPreference = "segmented";

// Returns the records of the block, newest first. Records of one instant keep their order, records
// without a date come last. Each message keeps the block alive.
Messages sortedNewestFirst(const std::shared_ptr<RecordBlock>& block);

// Whether both lists hold equal messages in the same order.
bool isEqual(const Messages& left, const Messages& right);

// Returns the list to show out of `all` for the stored value of kSegmentedPreference: everything
// for 0, one standard folder for 1 to 4, and for any other value what is `shown` now (null:
// nothing). The list is cut to the newest kMostRows before duplicates are removed, so ten messages
// with one duplicate show nine rows; this is kept on purpose.
ExtensionMessageList toShow(const ExtensionMessageList& all,
                            const ExtensionMessageList& shown,
                            std::int64_t segmented);

}  // namespace quillet::MessageList
