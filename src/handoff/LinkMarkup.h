#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quillet {

// `body`, a text without line feeds, with every link of `links` replaced everywhere by an anchor,
// one after the other, as they stand in the list. A link is the absolute text of a URL. A
// replacement that would make the anchors of all add more than `mostMarkup` bytes is left out, then
// and later; so are links in a body that would take reading much more than any message does.
std::string markUpLinks(std::string_view body,
                        const std::vector<std::string>& links,
                        std::size_t mostMarkup);

}  // namespace quillet
