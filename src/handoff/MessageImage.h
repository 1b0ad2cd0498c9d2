#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/ExtensionMessage.h"

// The one image file of a message, named after the numbers of its account and of itself. Messages
// with the same numbers share the file; the later save wins. Any thread.
namespace quillet {

// The full path of the file: "<acc_idx>_<idx>" in the folder "TodayImages" of the user's private
// temporary folder, which is created if it is missing. "" when the user has no such folder.
std::string img_path(const ExtensionMessage& message);

// Writes the bytes to img_path, whole or not at all. A failure keeps the older file and is not
// reported.
void save_image(const ExtensionMessage& message, std::string_view data);

// Always none: others read the saved file by its path.
std::optional<std::string> get_image(const ExtensionMessage& message);

}  // namespace quillet
