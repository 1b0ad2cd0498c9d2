#include "host/PropertyListWriter.h"

#include "host/BinaryPropertyList.h"
#include "host/XmlPropertyList.h"

namespace quillet::host {

std::string writePropertyList(const Value& root, PropertyListFormat format) {
    return format == PropertyListFormat::Xml ? writeXml(root) : writeBinary(root);
}

}  // namespace quillet::host
