#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/extension/ItemProvider.h"
#include "platform/extension/StyledText.h"

namespace quillet::platform {

// One thing that an extension was given: a text, attachments, or both.
struct ExtensionItem {
    std::optional<StyledText> attributedTitle;
    std::optional<StyledText> attributedContentText;
    std::vector<std::shared_ptr<ItemProvider>> attachments;
};

// What an extension was started with.
struct ExtensionContext {
    std::vector<ExtensionItem> inputItems;
};

}  // namespace quillet::platform
