#pragma once

#include <string>

#include "mailhost/clients/Draft.h"

#include "platform/base/Result.h"

namespace quillet::mailhost {

// What the message is for: a Drafts folder, or a file that a mail program opens for editing.
enum class DraftForm { Stored, Opened };

// A whole message (RFC 5322, MIME) of a draft: its headers, its body as text and, if there is one,
// as HTML, and its files. An error if a file cannot be read, or if they are longer than kMostFiles
// together. Any thread.
platform::Result<std::string> draftMessage(const Draft& draft, DraftForm form);

inline constexpr std::size_t kMostFiles = std::size_t{256} << 20U;  // bytes

}  // namespace quillet::mailhost
