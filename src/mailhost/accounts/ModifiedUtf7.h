#pragma once

#include <optional>
#include <string>
#include <string_view>

// The form of mailbox names on mail servers, which synchronising programs also write to disk:
// "Entw&APw-rfe".
namespace quillet::mailhost {

// The name in UTF-8. None if the text is not what encodeModifiedUtf7() writes, or has control
// characters.
std::optional<std::string> decodeModifiedUtf7(std::string_view text);

// `name` is UTF-8; bytes that are not become U+FFFD.
std::string encodeModifiedUtf7(std::string_view name);

}  // namespace quillet::mailhost
