#include "handoff/AttachmentPath.h"

#include "platform/url/URL.h"

namespace quillet {

std::optional<std::string> attachmentPath(const std::any& attachment) {
    if (const auto* path = std::any_cast<std::string>(&attachment)) {
        return *path;
    }
    const auto* url = std::any_cast<platform::URL>(&attachment);
    return url != nullptr && url->isFileURL() ? std::optional(url->path()) : std::nullopt;
}

}  // namespace quillet
