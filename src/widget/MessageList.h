#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "model/RecordBlock.h"

// How lists of messages are ordered and chosen: functions of their arguments, any thread.
namespace quillet::MessageList {

using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

inline constexpr std::size_t kMostRows = 10;
// The stored preference that holds the chosen segment: 1 to 3, or 0 when nobody has chosen yet.
inline constexpr std::string_view kSegmentedPreference = "segmented";

// The records of the block, newest first. Those of one instant keep their order, those without a
// date come last. Each message keeps the block alive.
Messages sortedNewestFirst(const std::shared_ptr<RecordBlock>& block);

// Whether both lists hold equal messages in the same order.
bool isEqual(const Messages& left, const Messages& right);

// The list to show of everything read, for the stored value of kSegmentedPreference: all messages
// for 0, those of one standard folder for 1 to 4, for any other value the list `shown` until now
// (null: empty). Cut to the newest kMostRows before duplicates are removed, so that a list whose
// first ten hold a duplicate shows nine rows; kept on purpose.
ExtensionMessageList toShow(const ExtensionMessageList& all,
                            const ExtensionMessageList& shown,
                            std::int64_t segmented);

}  // namespace quillet::MessageList
