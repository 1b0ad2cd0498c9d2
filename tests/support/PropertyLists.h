#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/plist/PropertyList.h"

namespace quillet::test {

// An XML property list around `root`, such as "<array/>".
inline std::string xmlPropertyList(std::string_view root) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" +
           std::string(root) + "</plist>\n";
}

// The document of an XML root element; throws if it cannot be read.
inline platform::PropertyListDocument documentOf(std::string_view root) {
    platform::PropertyListDocument document;
    if (const auto error = document.parse(xmlPropertyList(root))) {
        throw std::invalid_argument(error->description());
    }
    return document;
}

}  // namespace quillet::test
