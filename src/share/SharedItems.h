#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "share/ShareCommandLine.h"

#include "platform/base/Result.h"
#include "platform/extension/ExtensionContext.h"

// Things to share, as input of an extension. The text of an error tells the user what cannot be
// shared.
namespace quillet {

// A file by its path or file URL, or a web link.
platform::Result<platform::ExtensionItem> itemOfWord(const std::string& word);

// A text, HTML or a picture, depending on the content. Links in a text become anchors unless the
// kind is Plain. Text is UTF-8, or UTF-16 with a byte-order mark, else Latin-1. `source` names the
// origin of the bytes in errors.
platform::Result<platform::ExtensionItem> itemOfBytes(const std::string& bytes,
                                                      TextKind kind,
                                                      const std::string& source);

// What the clipboard holds: files and links, else a picture, else HTML, else text. With a kind
// other than ByContent only text of that kind. Needs a display. Main thread only.
std::vector<platform::Result<platform::ExtensionItem>> itemsOfClipboard(TextKind kind);

}  // namespace quillet
