#pragma once

#include <any>
#include <optional>
#include <string>

namespace quillet {

// The path of an attachment that is a path or a file URL; none for anything else. Any thread.
std::optional<std::string> attachmentPath(const std::any& attachment);

}  // namespace quillet
