#include "host/PropertyListWriter.h"

#include "host/XmlPropertyList.h"

namespace quillet::host {

std::string writePropertyList(const Value& root, PropertyListFormat format) {
    return format == PropertyListFormat::Xml ? writeXml(root)
                                             : platform::writeBinaryPropertyList(root);
}

}  // namespace quillet::host
