#pragma once

#include <string>
#include <string_view>

// The HTML body of a draft. A mail program would send along the files that it names, so nothing of
// a stranger's HTML reaches it but text, its form and links to the net. Linear time; any thread.
namespace quillet::mailhost {

// `html` with its paragraphs, lists, tables, emphasis and links to web pages, and without anything
// else: pictures, styles, scripts, forms, comments and unknown elements.
std::string harmlessHtml(std::string_view html);

// The text of `html` in lines. The address of a link follows its text if it is another one.
std::string textOfDraftHtml(std::string_view html);

}  // namespace quillet::mailhost
