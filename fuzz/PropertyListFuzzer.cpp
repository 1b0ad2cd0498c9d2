// Reads bytes as a property list of either format. Writing the values in either format and reading
// them again must change nothing.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "bench/store/PropertyListReader.h"
#include "bench/store/PropertyListWriter.h"
#include "fuzz/Require.h"
#include "platform/plist/PropertyList.h"

namespace quillet::fuzz {

namespace {

using platform::PropertyListDocument;
using platform::PropertyListErrorKind;
using test::PropertyListFormat;

// Equal leaves are written once, so a written tree may have more values than a file of its size may
// unfold to. That alone is not a finding.
void requireSameAfterReading(const std::string& written, PropertyListFormat format) {
    PropertyListDocument document;
    if (const auto error = document.parse(written)) {
        require(error->kind == PropertyListErrorKind::TooComplex, "a written list is read");
        return;
    }
    const test::Value tree = test::copyOf(document.root());
    require(test::writePropertyList(tree, format) == written, "reading and writing change nothing");
}

void readAndWrite(std::string_view bytes) {
    PropertyListDocument document;
    if (document.parse(bytes)) {
        require(!document.root(), "a list that cannot be read has no root");
        return;
    }
    const test::Value tree = test::copyOf(document.root());
    for (const auto format : {PropertyListFormat::Xml, PropertyListFormat::Binary}) {
        requireSameAfterReading(test::writePropertyList(tree, format), format);
    }
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::fuzz::readAndWrite({reinterpret_cast<const char*>(data), size});
    return 0;
}
