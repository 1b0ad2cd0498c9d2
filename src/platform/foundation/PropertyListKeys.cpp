#include <algorithm>

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListState.h"

namespace quillet::platform {

PropertyListKeys::PropertyListKeys(std::span<const std::string_view> keys)
    : keys_(keys.begin(), keys.end()) {}

void PropertyListKeys::find(const PropertyListValue& dictionary,
                            std::span<PropertyListValue> found) {
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        found[i] = dictionary.valueForKey(keys_[i]);
    }
}

}  // namespace quillet::platform
