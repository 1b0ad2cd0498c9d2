#pragma once

#include <optional>
#include <string>

namespace quillet::RequestUtils {

// The path of a file in `folder` that does not exist yet: `name` itself, else with "_1", "_2" …
// before its extension. None when name or folder is none. Any thread.
std::optional<std::string> GetGoodPath(const std::optional<std::string>& name,
                                       const std::optional<std::string>& folder);

}  // namespace quillet::RequestUtils
