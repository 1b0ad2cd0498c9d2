#include "platform/extension/ItemProvider.h"

#include <cerrno>
#include <utility>

namespace quillet::platform {

ReadyItemProvider::ReadyItemProvider(Item item) : item_(std::move(item)) {}

bool ReadyItemProvider::hasItemConformingToTypeIdentifier(std::string_view type) const {
    return type == (std::holds_alternative<URL>(item_) ? kUTTypeURL : kUTTypeImage);
}

void ReadyItemProvider::loadItem(std::string_view type, Completion completion) {
    if (hasItemConformingToTypeIdentifier(type)) {
        completion(item_);
    } else {
        completion(posixError(EINVAL, "there is no item of the type " + std::string(type)));
    }
}

}  // namespace quillet::platform
