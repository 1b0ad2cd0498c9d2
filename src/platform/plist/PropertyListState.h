#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/ByteBuffer.h"
#include "platform/plist/PropertyList.h"

// The contents of a parsed document, which PropertyList.h hides: that is why PropertyList.cpp and
// this header know each other. Internal to the property-list sources.
namespace quillet::platform {

// The big-endian number of `width` (1 to 8) bytes at `at`. Reads 8 bytes from there, which
// ByteBuffer's padding makes readable.
inline std::uint64_t bigEndianNumber(const char* at, std::size_t width) noexcept {
    constexpr std::size_t kWidest = 8;
    std::uint64_t number = 0;
    std::memcpy(&number, at, kWidest);
    if constexpr (std::endian::native == std::endian::little) {
        number = __builtin_bswap64(number);
    }
    return number >> (8 * (kWidest - width));
}

// How to read the bytes of a value.
enum class PropertyListForm : std::uint8_t {
    Plain,       // UTF-8 text or data as it is; containers of the XML format
    Escaped,     // XML text with references, CDATA sections, comments or line ends to convert
    Utf16,       // big-endian UTF-16
    Base64,      // data as plain text
    Signed,      // a number kept in the node
    Unsigned,    // a number kept in the node that only an unsigned integer can hold
    References,  // containers of the binary format
    Broken,      // a binary object that cannot be read and that no value refers to
};

// One value, 16 bytes. An XML document is a tape: a container's values follow it, those of a
// dictionary as key, value, key, value. A binary document has one node for each object, in the
// order of their numbers.
struct PropertyListNode {
    PropertyListType type = PropertyListType::Absent;
    PropertyListForm form = PropertyListForm::Plain;
    // Binary containers, the height: levels of containers, itself included; 0 while unknown.
    // XML dictionaries, the shape: dictionaries with equal lengths and equal shapes other than 0
    // have the same keys at the same positions, and contain no containers.
    std::uint16_t heightOrShape = 0;
    // XML: the node after this value and everything in it. Binary containers: the number of values
    // they unfold to, themselves included.
    std::uint32_t extent = 0;
    // Text and data: the offset of the bytes. Binary containers: the offset of the references.
    // Numbers: the low half of their 64 bits; `length` is the high half.
    std::uint32_t offset = 0;
    // Text and data: the number of bytes. Containers: the number of elements or entries.
    std::uint32_t length = 0;

    std::uint64_t bits() const noexcept {
        return offset | (static_cast<std::uint64_t>(length) << 32U);
    }
    void setBits(std::uint64_t bits) noexcept {
        offset = static_cast<std::uint32_t>(bits);
        length = static_cast<std::uint32_t>(bits >> 32U);
    }
    double real() const noexcept { return std::bit_cast<double>(bits()); }
    bool isContainer() const noexcept {
        return type == PropertyListType::Array || type == PropertyListType::Dictionary;
    }
};
static_assert(sizeof(PropertyListNode) == 16);

struct PropertyListState {
    ByteBuffer bytes;        // the file
    std::string transcoded;  // a UTF-16 file in UTF-8, with ByteBuffer's padding
    std::vector<PropertyListNode> nodes;
    const char* text = nullptr;    // the start of the nodes' offsets
    std::uint64_t generation = 0;  // counts the parses: what readers remember of older ones is old
    std::uint32_t root = 0;
    std::uint8_t referenceWidth = 0;  // bytes of a reference in the binary format, 0 for XML
    std::uint8_t referenceSkip = 0;   // leading zero bytes of a reference
    std::uint8_t referenceShift = 0;  // low bits of the 32 after them that are not the reference's
    bool hasRoot = false;
    std::uint32_t longestText = 0;  // bytes; 0 for XML
    PropertyListDocument::SharedBytes sharedBytes = PropertyListDocument::SharedBytes::AtEachPlace;

    std::string_view textOf(const PropertyListNode& node) const noexcept {
        return {text + node.offset, node.length};
    }

    void setReferenceWidth(std::size_t width) noexcept {
        constexpr std::size_t kKept = sizeof(std::uint32_t);
        referenceWidth = static_cast<std::uint8_t>(width);
        referenceSkip = static_cast<std::uint8_t>(width > kKept ? width - kKept : 0);
        referenceShift = static_cast<std::uint8_t>(width < kKept ? 8 * (kKept - width) : 0);
    }
    // The object of the reference number `index` after `offset` (binary format, already checked).
    std::uint32_t reference(std::uint32_t offset, std::uint32_t index) const noexcept {
        const char* at = text + offset + std::size_t{index} * referenceWidth + referenceSkip;
        return static_cast<std::uint32_t>(bigEndianNumber(at, sizeof(std::uint32_t))) >>
               referenceShift;
    }
};

inline PropertyListValue::PropertyListValue(const PropertyListState* state,
                                            std::uint32_t node) noexcept {
    if (state->nodes[node].type != PropertyListType::Absent) {
        state_ = state;
        node_ = node;
    }
}

inline const PropertyListNode& PropertyListValue::node() const noexcept {
    return state_->nodes[node_];
}

// Calls `visit` with the key node and the value node of each entry of a dictionary, in file order.
template <typename Visit>
void forEachEntry(const PropertyListState& state, std::uint32_t dictionary, const Visit& visit) {
    const PropertyListNode& node = state.nodes[dictionary];
    std::uint32_t at = dictionary + 1;
    for (std::uint32_t i = 0; i < node.length; ++i) {
        if (node.form == PropertyListForm::References) {
            visit(state.reference(node.offset, i), state.reference(node.offset, node.length + i));
        } else {
            visit(at, at + 1);
            at = state.nodes[at + 1].extent;
        }
    }
}

// The text of a string node: a view into the document or, if it must be converted, into `scratch`.
std::string_view textOfNode(const PropertyListState& state,
                            const PropertyListNode& node,
                            std::string& scratch);

// Thrown by the readers within a parse; PropertyListDocument::parse returns what it carries.
struct PropertyListFailure {
    PropertyListError error;
};

[[noreturn]] inline void failPropertyList(PropertyListErrorKind kind,
                                          std::size_t offset,
                                          std::string text) {
    throw PropertyListFailure{{kind, offset, std::move(text)}};
}

inline constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

// Fill state.nodes and the root. The XML reader reads `size` bytes of UTF-8 at state.text, which
// ByteBuffer's padding follows; the binary one reads state.bytes.
void readXmlPropertyList(PropertyListState& state, std::size_t size);
void readBinaryPropertyList(PropertyListState& state);

// Appends an XML text of the form Escaped, unescaped. The text has been checked; the rest of the
// document or ByteBuffer's padding follows it.
void appendUnescapedXml(std::string_view text, std::string& result);
// Decodes base64; bytes that are not base64 digits are skipped.
std::string decodedBase64(std::string_view text);

}  // namespace quillet::platform
