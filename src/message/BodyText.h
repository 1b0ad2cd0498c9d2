#pragma once

#include <string>
#include <string_view>

// Texts of bodies. Any thread.
namespace quillet::message {

// `bytes` in UTF-8, with line feeds as line ends and without control characters. What is not in
// `charset` becomes U+FFFD; text of no charset, or of one that is unknown, is UTF-8 or
// Windows-1252.
std::string utf8Of(std::string_view bytes, const std::string& charset);

// The text of HTML with a line for each paragraph, row and list entry. Linear time.
std::string plainTextOfHtml(std::string_view html);

}  // namespace quillet::message
