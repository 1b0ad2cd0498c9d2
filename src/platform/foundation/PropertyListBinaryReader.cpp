#include "platform/foundation/PropertyListState.h"

namespace quillet::platform {

void readBinaryPropertyList(PropertyListState& state) {
    failPropertyList(PropertyListErrorKind::UnknownFormat, state.bytes.size(), "binary");
}

}  // namespace quillet::platform
