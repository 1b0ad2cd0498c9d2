#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillet {

class ExtensionMessage;
using ExtensionMessageList = std::shared_ptr<const std::vector<std::shared_ptr<ExtensionMessage>>>;

}  // namespace quillet
