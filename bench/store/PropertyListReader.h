#pragma once

#include "bench/store/PropertyListWriter.h"
#include "platform/plist/PropertyList.h"

namespace quillet::test {

// A copy of a value of a document that has been read, to be changed and written back: every entry
// in its place, kinds kept. Values that the file shares are copied for each place. Any thread.
Value copyOf(const platform::PropertyListValue& value);

}  // namespace quillet::test
