#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

// `body`, a text without line feeds, with every link of `links` replaced everywhere by an anchor,
// one link after the other, in list order. A link is the absolute text of a URL. A link is left
// out, at once and later in the list, if replacing it would make the anchors add more than
// `mostMarkup` bytes in all. Links are also left out of a body that would take much more reading
// than any message.
std::string markUpLinks(std::string_view body,
                        const std::vector<std::string>& links,
                        std::size_t mostMarkup);

}  // namespace quillet
