#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "share/ShareCommandLine.h"

#include "platform/base/Result.h"
#include "platform/extension/ExtensionContext.h"

// What there is to share, as input of an extension. Errors say in words what cannot be shared.
namespace quillet {

// A file by its path or file URL, or a web link.
platform::Result<platform::ExtensionItem> itemOfWord(const std::string& word);

// A text, HTML or a picture by its content. Each link in a text becomes an anchor, except where the
// kind is Plain. Text is UTF-8, or UTF-16 with a byte-order mark, else taken as Latin-1. `source`
// is what errors call the place where the bytes come from.
platform::Result<platform::ExtensionItem> itemOfBytes(const std::string& bytes,
                                                      TextKind kind,
                                                      const std::string& source);

// What the clipboard holds: files and links, else a picture, else HTML, else text; of these only
// the text that is asked for, where one is. Needs a display and the main thread.
std::vector<platform::Result<platform::ExtensionItem>> itemsOfClipboard(TextKind kind);

}  // namespace quillet
