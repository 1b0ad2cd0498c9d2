#pragma once

#include <string>

#include "platform/plist/PropertyListWriter.h"

namespace quillet::test {

using namespace platform::PropertyListTree;

enum class PropertyListFormat { Xml, Binary };

// The bytes of a file that holds `root`. Takes time in proportion to the size of the tree.
//
// In XML a character that the format cannot hold becomes U+FFFD, a date loses its fraction of a
// second, a UID becomes the dictionary that stands for it there and a null the empty text. The
// binary format holds equal leaves (texts, keys included, numbers, dates, data) once.
std::string writePropertyList(const Value& root, PropertyListFormat format);

}  // namespace quillet::test
