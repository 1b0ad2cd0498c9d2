#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"

namespace quillet {

// The body of a draft as HTML, written back into the field that it is made from; so a message is
// rendered once. Text is taken as HTML as it stands: nothing is escaped.
//
// With an HTML body, or an empty one and no plain body: the HTML body and an image for each
// attachment that is a path or a file URL. Otherwise the plain body with "<br>" for line ends and
// an anchor around each link that searchUrlsDetector finds and that the text shows in its absolute
// form; every link is replaced everywhere, once for each time that it was found, so that repeated
// links nest. Anchors may add kMostMarkup and the body's own length: where the replacing of a link
// would add more, the link is left as it is, since repeated links double with each time. In a body
// made to take long to search, links may be left, too. Without any body, "" and no change.
//
// Any thread; one message is rendered by one thread at a time.
std::string renderHtml(ExtensionMessage& message);

// Bytes; see renderHtml.
inline constexpr std::size_t kMostMarkup = std::size_t{4} << 20U;

// The absolute URLs of the links in a UTF-8 text, in text order; see platform/url/
// LinkDetector.h. The message itself has no part in it.
std::vector<std::string> searchUrlsDetector(const ExtensionMessage& message, std::string_view text);

}  // namespace quillet
