#pragma once

#include <string>
#include <string_view>

// Texts of header fields. Any thread.
namespace quillet::mailhost {

// The raw bytes of a field as UTF-8 without NUL and line breaks, at most `longest` bytes of them.
// Bytes that are not valid UTF-8 are in `charset`, or in Latin-1 if they cannot be.
std::string fieldText(std::string_view raw, const std::string& charset, std::size_t longest);

// `text` as a row shows it: one line of valid UTF-8 without control characters, with single blanks,
// cut to `longest` bytes, the last of which are "…" then.
std::string shownText(std::string_view text, std::size_t longest);

}  // namespace quillet::mailhost
