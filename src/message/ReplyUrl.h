#pragma once

#include <string>

#include "message/ParsedMessage.h"

namespace quillet::message {

// The mailto URL of an answer: to the Reply-To addresses, else the senders, with "Re: " once before
// the subject, and the identifiers that keep the answer in its thread. Empty if there is nobody to
// answer to. Any thread.
std::string replyUrl(const ParsedMessage& message);

}  // namespace quillet::message
