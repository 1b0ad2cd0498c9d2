#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/Bundle.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// The text of `key` in a record's dictionary; where it is missing, the localised text of
// `fallbackKey`. Raises platform::Exception when the value is no text or `dictionary` no
// dictionary.
inline std::string textField(const platform::PropertyListValue& dictionary,
                             std::string_view key,
                             std::string_view fallbackKey) {
    const platform::PropertyListValue value = dictionary.valueForKey(key);
    return value ? value.stringValue() : platform::Bundle::main().localizedString(fallbackKey);
}

}  // namespace quillet
