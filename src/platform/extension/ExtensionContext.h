#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/extension/ItemProvider.h"
#include "platform/extension/StyledText.h"

namespace quillet::platform {

// One item that an extension received: a text, attachments, or both.
struct ExtensionItem {
    std::optional<StyledText> attributedTitle;
    std::optional<StyledText> attributedContentText;
    std::vector<std::shared_ptr<ItemProvider>> attachments;
};

// The input of an extension.
struct ExtensionContext {
    std::vector<ExtensionItem> inputItems;
};

}  // namespace quillet::platform
