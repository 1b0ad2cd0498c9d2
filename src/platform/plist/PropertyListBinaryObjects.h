#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/plist/PropertyListState.h"

// Internal to the reader of binary property lists.
//
// The format: "bplist" and a version of two digits; the objects; a table with the offset of each
// object; a trailer of 32 bytes that says where the table is and how wide its numbers are. An
// object is a marker byte (kind in the high half, size in the low half) and its bytes; containers
// hold the numbers of other objects. All numbers are big-endian.
namespace quillet::platform {

inline constexpr std::size_t kBinaryHeaderSize = 8;
inline constexpr std::size_t kWidestBinaryNumber = 8;

struct BinaryTrailer {
    std::uint64_t offsetWidth = 0;
    std::uint64_t referenceWidth = 0;
    std::uint64_t objectCount = 0;
    std::uint64_t root = 0;
    std::uint64_t tableOffset = 0;
};

// Reads the objects one by one into nodes and checks each by itself. A broken object is not an
// error yet, since nothing may refer to it. All objects together may not be longer than the file,
// so overlapping objects cannot cost quadratic time.
class BinaryObjectReader {
public:
    BinaryObjectReader(std::string_view bytes, const BinaryTrailer& trailer)
        : bytes_(bytes), end_(trailer.tableOffset), referenceWidth_(trailer.referenceWidth) {}

    // Fills the node. Returns what is wrong, or null.
    const char* read(std::uint64_t offset, PropertyListNode& node);

    PropertyListErrorKind errorKind() const { return errorKind_; }
    std::uint64_t payloadRead() const { return payload_; }
    std::uint32_t longestText() const { return longestText_; }  // bytes

private:
    static const char* readSimple(unsigned low, PropertyListNode& node);
    const char* readInteger(std::uint64_t offset, unsigned low, PropertyListNode& node) const;
    const char* readReal(std::uint64_t offset, unsigned low, PropertyListNode& node) const;
    const char* readDate(std::uint64_t offset, unsigned low, PropertyListNode& node) const;
    const char* readUid(std::uint64_t offset, unsigned low, PropertyListNode& node) const;
    const char* readBytes(std::uint64_t offset, unsigned marker, PropertyListNode& node);
    const char* readContainer(std::uint64_t offset, unsigned marker, PropertyListNode& node);
    const char* checkText(PropertyListNode& node);
    bool readSize(std::uint64_t& offset, unsigned low, std::uint64_t& size) const;
    bool placeFits(std::uint64_t offset,
                   std::uint64_t count,
                   std::uint64_t width,
                   PropertyListNode& node);
    bool has(std::uint64_t offset, std::uint64_t length) const {
        return offset <= end_ && length <= end_ - offset;
    }
    std::uint64_t number(std::uint64_t offset, std::size_t width) const {
        return bigEndianNumber(bytes_.data() + offset, width);
    }

    std::string_view bytes_;
    std::uint64_t end_;  // of the objects
    std::uint64_t referenceWidth_;
    std::uint64_t payload_ = 0;  // bytes of texts, data and references read so far
    std::uint32_t longestText_ = 0;
    PropertyListErrorKind errorKind_ = PropertyListErrorKind::Malformed;
};

}  // namespace quillet::platform
