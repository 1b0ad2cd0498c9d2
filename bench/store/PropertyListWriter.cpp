#include "bench/store/PropertyListWriter.h"

#include "bench/store/XmlPropertyList.h"

namespace quillet::test {

std::string writePropertyList(const Value& root, PropertyListFormat format) {
    return format == PropertyListFormat::Xml ? writeXml(root)
                                             : platform::writeBinaryPropertyList(root);
}

}  // namespace quillet::test
