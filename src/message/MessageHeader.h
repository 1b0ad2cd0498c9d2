#pragma once

#include <string>

#include "message/GMimeObjects.h"
#include "message/ParsedMessage.h"

namespace quillet::message {

// A text of the library as one trimmed line without control characters, at most 1,000 bytes; null
// is the empty text.
std::string oneLine(const char* text);

// Fills the fields of `message` that come from the header.
void readHeader(GMimeMessage* read, ParsedMessage& message);

}  // namespace quillet::message
