#pragma once

#include <cstddef>
#include <string_view>

#include "message/ParsedMessage.h"

namespace quillet::message {

inline constexpr std::size_t kLongestFile = std::size_t{64} << 20U;  // bytes

// The message in the bytes of a file, which may be broken or anything else: what cannot be read is
// left out. Takes at most 1,000 parts in 32 levels. A message within the message is an attachment.
// Any thread.
ParsedMessage parseMessage(std::string_view bytes);

// The first bytes of a file as the text of a message without a header, for a message that is not
// to be parsed. Any thread.
ParsedMessage sourceOf(std::string_view bytes);

}  // namespace quillet::message
