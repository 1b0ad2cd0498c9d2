#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"

namespace quillet {

// The body of a draft as HTML, which is also stored in the field it was made from: render a message
// only once. Text is taken as HTML as it is: nothing is escaped.
//
// With an HTML body, or an empty one and no plain body: the HTML body and an image for each
// attachment that is a path or a file URL. Otherwise the plain body with "<br>" for line ends and
// an anchor around each link that searchUrlsDetector finds and that the text contains in its
// absolute form. Every link is replaced everywhere, once for each time it was found, so repeated
// links nest and double each time. Anchors may therefore add at most kMostMarkup and the body's own
// length; a link that would add more stays as it is. Links may also stay in a body that is made to
// be slow to search. Without any body, returns "" and changes nothing.
//
// Any thread; one message is rendered by one thread at a time.
std::string renderHtml(ExtensionMessage& message);

// Bytes; see renderHtml.
inline constexpr std::size_t kMostMarkup = std::size_t{4} << 20U;

// The absolute URLs of the links in a UTF-8 text, in text order; see platform/url/LinkDetector.h.
// The message itself is not read.
std::vector<std::string> searchUrlsDetector(const ExtensionMessage& message, std::string_view text);

}  // namespace quillet
