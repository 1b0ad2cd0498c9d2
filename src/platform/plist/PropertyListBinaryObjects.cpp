#include "platform/plist/PropertyListBinaryObjects.h"

#include <algorithm>
#include <bit>
#include <string_view>

#include "platform/base/Utf8.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;
using Type = PropertyListType;

// The low half of a marker whose size follows as an integer object.
constexpr unsigned kSizeFollows = 0xF;
// A text counts one more visit for this many bytes, which also limits long shared texts.
constexpr std::uint32_t kTextBytesPerVisit = 16;

}  // namespace

const char* BinaryObjectReader::read(std::uint64_t offset, Node& node) {
    errorKind_ = Kind::Malformed;
    if (offset < kBinaryHeaderSize || offset >= end_) {
        return "an object that lies outside the objects";
    }
    const auto marker = static_cast<unsigned char>(bytes_[offset]);
    const unsigned low = marker & 0xFU;
    node.extent = 1;
    switch (marker >> 4U) {
        case 0x0:
            return readSimple(low, node);
        case 0x1:
            return readInteger(offset + 1, low, node);
        case 0x2:
            return readReal(offset + 1, low, node);
        case 0x3:
            return readDate(offset + 1, low, node);
        case 0x4:
        case 0x5:
        case 0x6:
        case 0x7:
            return readBytes(offset + 1, marker, node);
        case 0x8:
            return readUid(offset + 1, low, node);
        case 0xA:
        case 0xB:
        case 0xC:
        case 0xD:
            return readContainer(offset + 1, marker, node);
        default:
            return "an object of an unknown kind";
    }
}

const char* BinaryObjectReader::readSimple(unsigned low, Node& node) {
    constexpr unsigned kNull = 0x0;
    constexpr unsigned kFalse = 0x8;
    constexpr unsigned kTrue = 0x9;
    if (low == kNull) {
        return nullptr;  // an absent value
    }
    if (low != kFalse && low != kTrue) {
        return "an object of an unknown kind";
    }
    node.type = Type::Boolean;
    node.setBits(low == kTrue ? 1 : 0);
    return nullptr;
}

// Integers of 1, 2 and 4 bytes are unsigned, those of 8 are signed. Those of 16 bytes hold the rest
// of the unsigned range.
const char* BinaryObjectReader::readInteger(std::uint64_t offset, unsigned low, Node& node) const {
    constexpr unsigned kWidestExponent = 4;
    const std::size_t width = std::size_t{1} << low;
    if (low > kWidestExponent || !has(offset, width)) {
        return "an integer that is too wide or cut off";
    }
    node.type = Type::Integer;
    node.form = Form::Signed;
    if (low < kWidestExponent) {
        node.setBits(number(offset, width));
        return nullptr;
    }
    const std::uint64_t high = number(offset, kWidestBinaryNumber);
    const std::uint64_t bits = number(offset + kWidestBinaryNumber, kWidestBinaryNumber);
    const bool negative = static_cast<std::int64_t>(bits) < 0;
    if (high == 0) {
        node.form = negative ? Form::Unsigned : Form::Signed;
    } else if (high != ~std::uint64_t{0} || !negative) {
        return "an integer that 64 bits cannot hold";
    }
    node.setBits(bits);
    return nullptr;
}

const char* BinaryObjectReader::readReal(std::uint64_t offset, unsigned low, Node& node) const {
    const std::size_t width = std::size_t{1} << low;
    if ((width != sizeof(float) && width != sizeof(double)) || !has(offset, width)) {
        return "a real that is not of 4 or 8 bytes or cut off";
    }
    std::uint64_t bits = number(offset, width);
    if (width == sizeof(float)) {
        const auto value = static_cast<double>(std::bit_cast<float>(static_cast<unsigned>(bits)));
        bits = std::bit_cast<std::uint64_t>(value);
    }
    node.type = Type::Real;
    node.setBits(bits);
    return nullptr;
}

const char* BinaryObjectReader::readDate(std::uint64_t offset, unsigned low, Node& node) const {
    constexpr unsigned kDouble = 3;
    if (low != kDouble || !has(offset, sizeof(double))) {
        return "a date that is not of 8 bytes or cut off";
    }
    node.type = Type::Date;
    node.setBits(number(offset, sizeof(double)));
    return nullptr;
}

const char* BinaryObjectReader::readUid(std::uint64_t offset, unsigned low, Node& node) const {
    const std::size_t width = low + 1U;
    if (width > kWidestBinaryNumber || !has(offset, width)) {
        return "a UID that is wider than 8 bytes or cut off";
    }
    node.type = Type::Uid;
    node.setBits(number(offset, width));
    return nullptr;
}

// Reads the size of an object from its marker, or from the integer object after it, which is
// skipped.
bool BinaryObjectReader::readSize(std::uint64_t& offset, unsigned low, std::uint64_t& size) const {
    size = low;
    if (low != kSizeFollows) {
        return true;
    }
    constexpr unsigned kInteger = 0x1;
    if (!has(offset, 1)) {
        return false;
    }
    const auto marker = static_cast<unsigned char>(bytes_[offset]);
    const std::size_t width = std::size_t{1} << (marker & 0xFU);
    if (marker >> 4U != kInteger || width > kWidestBinaryNumber || !has(offset + 1, width)) {
        return false;
    }
    size = number(offset + 1, width);
    offset += 1 + width;
    return true;
}

// Checks that there are `count` pieces of `width` bytes at `offset` and stores the offset.
bool BinaryObjectReader::placeFits(std::uint64_t offset,
                                   std::uint64_t count,
                                   std::uint64_t width,
                                   Node& node) {
    if (count > end_ || !has(offset, count * width)) {
        return false;
    }
    payload_ += count * width;
    node.offset = static_cast<std::uint32_t>(offset);
    return true;
}

const char* BinaryObjectReader::readBytes(std::uint64_t offset, unsigned marker, Node& node) {
    constexpr unsigned kData = 0x4;
    constexpr unsigned kUtf16 = 0x6;
    const unsigned kind = marker >> 4U;
    const std::size_t width = kind == kUtf16 ? 2 : 1;
    std::uint64_t count = 0;
    if (!readSize(offset, marker & 0xFU, count) || !placeFits(offset, count, width, node)) {
        return "a text or data longer than the objects";
    }
    node.type = kind == kData ? Type::Data : Type::String;
    node.form = kind == kUtf16 ? Form::Utf16 : Form::Plain;
    node.length = static_cast<std::uint32_t>(count * width);
    node.extent = 1 + node.length / kTextBytesPerVisit;
    if (kind == kData) {
        return nullptr;
    }
    longestText_ = std::max(longestText_, node.length);
    return kind == kUtf16 ? nullptr : checkText(node);
}

const char* BinaryObjectReader::checkText(Node& node) {
    // Overlapping texts are refused once all objects are read; this one need not be checked then.
    if (payload_ > bytes_.size()) {
        return nullptr;
    }
    const std::string_view text(bytes_.data() + node.offset, node.length);
    if (firstInvalidUtf8(text)) {
        errorKind_ = Kind::InvalidText;
        return "a text that is no valid UTF-8";
    }
    return nullptr;
}

const char* BinaryObjectReader::readContainer(std::uint64_t offset, unsigned marker, Node& node) {
    constexpr unsigned kDictionary = 0xD;
    const bool dictionary = marker >> 4U == kDictionary;
    std::uint64_t count = 0;
    if (!readSize(offset, marker & 0xFU, count) ||
        !placeFits(offset, count, referenceWidth_ * (dictionary ? 2 : 1), node)) {
        return "a container longer than the objects";
    }
    node.type = dictionary ? Type::Dictionary : Type::Array;
    node.form = Form::References;
    node.length = static_cast<std::uint32_t>(count);
    node.extent = 0;
    return nullptr;
}

}  // namespace quillet::platform
