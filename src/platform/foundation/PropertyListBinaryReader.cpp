#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/foundation/ByteReader.h"
#include "platform/foundation/PropertyListState.h"
#include "platform/foundation/Utf8.h"

// The format: "bplist" and a version of two digits; the objects; a table with the offset of each
// object; a trailer of 32 bytes that says where the table is and how wide its numbers are. An
// object is a marker byte (kind in the high half, size in the low half) and its bytes; containers
// hold the numbers of other objects. All numbers are big-endian.
namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;
using Type = PropertyListType;

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kWidestNumber = 8;
// The low half of a marker that says that the size follows as an integer object.
constexpr unsigned kSizeFollows = 0xF;
// A text counts one visit more for each so many bytes, so that shared long texts are bounded, too.
constexpr std::uint32_t kTextBytesPerVisit = 16;
// The height of a container that is being walked.
constexpr std::uint16_t kOpen = 0xFFFF;

struct Trailer {
    std::uint64_t offsetWidth = 0;
    std::uint64_t referenceWidth = 0;
    std::uint64_t objectCount = 0;
    std::uint64_t root = 0;
    std::uint64_t tableOffset = 0;
};

// Reads the objects one by one into nodes, each checked for itself. A broken object is no failure
// yet: nothing may refer to it. All objects together may not be longer than the file, so that
// overlapping ones cannot make the work grow with its square.
class ObjectReader {
public:
    ObjectReader(const ByteReader& bytes, const Trailer& trailer)
        : bytes_(bytes), end_(trailer.tableOffset), referenceWidth_(trailer.referenceWidth) {}

    // Fills the node. On an error returns what is wrong, else null.
    const char* read(std::uint64_t offset, Node& node);

    Kind errorKind() const { return errorKind_; }
    std::uint64_t payloadRead() const { return payload_; }

private:
    static const char* readSimple(unsigned low, Node& node);
    const char* readInteger(std::uint64_t offset, unsigned low, Node& node) const;
    const char* readReal(std::uint64_t offset, unsigned low, Node& node) const;
    const char* readDate(std::uint64_t offset, unsigned low, Node& node) const;
    const char* readUid(std::uint64_t offset, unsigned low, Node& node) const;
    const char* readBytes(std::uint64_t offset, unsigned marker, Node& node);
    const char* readContainer(std::uint64_t offset, unsigned marker, Node& node);
    const char* checkText(Node& node);
    bool readSize(std::uint64_t& offset, unsigned low, std::uint64_t& size) const;
    bool placeFits(std::uint64_t offset, std::uint64_t count, std::uint64_t width, Node& node);
    bool has(std::uint64_t offset, std::uint64_t length) const {
        return ByteReader::fits(offset, length, end_);
    }
    std::uint64_t number(std::uint64_t offset, std::size_t width) const {
        return bigEndianNumber(bytes_.data() + offset, width);
    }

    const ByteReader& bytes_;
    std::uint64_t end_;  // of the objects
    std::uint64_t referenceWidth_;
    std::uint64_t payload_ = 0;  // bytes of texts, data and references read so far
    Kind errorKind_ = Kind::Malformed;
};

const char* ObjectReader::read(std::uint64_t offset, Node& node) {
    errorKind_ = Kind::Malformed;
    if (offset < kHeaderSize || offset >= end_) {
        return "an object that lies outside the objects";
    }
    const auto marker = static_cast<unsigned char>(bytes_.data()[offset]);
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

const char* ObjectReader::readSimple(unsigned low, Node& node) {
    constexpr unsigned kNull = 0x0;
    constexpr unsigned kFalse = 0x8;
    constexpr unsigned kTrue = 0x9;
    if (low == kNull) {
        return nullptr;  // stays an absent value
    }
    if (low != kFalse && low != kTrue) {
        return "an object of an unknown kind";
    }
    node.type = Type::Boolean;
    node.setBits(low == kTrue ? 1 : 0);
    return nullptr;
}

// Integers of 1, 2 and 4 bytes are unsigned, those of 8 are signed, those of 16 hold what is left
// of the unsigned range.
const char* ObjectReader::readInteger(std::uint64_t offset, unsigned low, Node& node) const {
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
    const std::uint64_t high = number(offset, kWidestNumber);
    const std::uint64_t bits = number(offset + kWidestNumber, kWidestNumber);
    const bool negative = static_cast<std::int64_t>(bits) < 0;
    if (high == 0) {
        node.form = negative ? Form::Unsigned : Form::Signed;
    } else if (high != ~std::uint64_t{0} || !negative) {
        return "an integer that 64 bits cannot hold";
    }
    node.setBits(bits);
    return nullptr;
}

const char* ObjectReader::readReal(std::uint64_t offset, unsigned low, Node& node) const {
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

const char* ObjectReader::readDate(std::uint64_t offset, unsigned low, Node& node) const {
    constexpr unsigned kDouble = 3;
    if (low != kDouble || !has(offset, sizeof(double))) {
        return "a date that is not of 8 bytes or cut off";
    }
    node.type = Type::Date;
    node.setBits(number(offset, sizeof(double)));
    return nullptr;
}

const char* ObjectReader::readUid(std::uint64_t offset, unsigned low, Node& node) const {
    const std::size_t width = low + 1U;
    if (width > kWidestNumber || !has(offset, width)) {
        return "a UID that is wider than 8 bytes or cut off";
    }
    node.type = Type::Uid;
    node.setBits(number(offset, width));
    return nullptr;
}

// The size of an object: in its marker, or in an integer object behind it, which is passed.
bool ObjectReader::readSize(std::uint64_t& offset, unsigned low, std::uint64_t& size) const {
    size = low;
    if (low != kSizeFollows) {
        return true;
    }
    constexpr unsigned kInteger = 0x1;
    if (!has(offset, 1)) {
        return false;
    }
    const auto marker = static_cast<unsigned char>(bytes_.data()[offset]);
    const std::size_t width = std::size_t{1} << (marker & 0xFU);
    if (marker >> 4U != kInteger || width > kWidestNumber || !has(offset + 1, width)) {
        return false;
    }
    size = number(offset + 1, width);
    offset += 1 + width;
    return true;
}

// Checks that `count` pieces of `width` bytes lie at `offset` and notes the place.
bool ObjectReader::placeFits(std::uint64_t offset,
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

const char* ObjectReader::readBytes(std::uint64_t offset, unsigned marker, Node& node) {
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
    return kind == kData || kind == kUtf16 ? nullptr : checkText(node);
}

const char* ObjectReader::checkText(Node& node) {
    // Overlapping texts are refused when all objects are read; until then they are not looked at.
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

const char* ObjectReader::readContainer(std::uint64_t offset, unsigned marker, Node& node) {
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

// Walks from the root over everything that can be reached, each object once, and finds for every
// container how deep it goes and how many values it unfolds to.
class TreeChecker {
public:
    TreeChecker(PropertyListState& state, const ByteReader& bytes, const Trailer& trailer)
        : nodes_(state.nodes),
          bytes_(bytes),
          trailer_(trailer),
          width_(trailer.referenceWidth),
          budget_(PropertyListDocument::kVisitsBase + bytes.size()) {}

    void check(std::uint32_t root);

private:
    struct Frame {
        std::uint32_t node = 0;
        std::uint32_t next = 0;    // reference to look at next
        std::uint32_t count = 0;   // references in all
        std::uint16_t height = 0;  // of the containers in it
        std::uint64_t visits = 0;
    };

    [[noreturn]] void failAtObject(std::uint64_t object, std::string text, Kind kind) const;
    [[noreturn]] void failAtBrokenObject(std::uint64_t object) const;
    std::uint64_t offsetOf(std::uint64_t object) const;
    std::uint64_t referenceAt(const Node& container, std::uint32_t index) const {
        const char* references = bytes_.data() + container.offset;
        return bigEndianNumber(references + index * width_, width_);
    }

    void open(std::uint32_t object);
    void checkKeys(Frame& frame);
    void checkValues(Frame& frame);
    void close();
    void addVisits(Frame& frame, std::uint64_t visits) const;

    std::vector<Node>& nodes_;
    const ByteReader& bytes_;
    const Trailer& trailer_;
    std::size_t width_;
    std::uint64_t budget_;
    std::array<Frame, PropertyListDocument::kMaximumDepth> frames_{};
    std::size_t depth_ = 0;
    std::string_view lastKeys_;  // references of the dictionary checked before
    std::uint64_t lastKeyVisits_ = 0;
};

std::uint64_t TreeChecker::offsetOf(std::uint64_t object) const {
    return bigEndianNumber(bytes_.data() + trailer_.tableOffset + object * trailer_.offsetWidth,
                           trailer_.offsetWidth);
}

// The place of the error is the object, or its entry of the table where that leads astray.
void TreeChecker::failAtObject(std::uint64_t object, std::string text, Kind kind) const {
    const std::uint64_t offset = offsetOf(object);
    const bool inside = offset >= kHeaderSize && offset < trailer_.tableOffset;
    const std::uint64_t entry = trailer_.tableOffset + object * trailer_.offsetWidth;
    failPropertyList(kind, inside ? offset : entry, std::move(text));
}

void TreeChecker::failAtBrokenObject(std::uint64_t object) const {
    ObjectReader reader(bytes_, trailer_);
    Node ignored;
    const char* reason = reader.read(offsetOf(object), ignored);
    failAtObject(object, reason != nullptr ? reason : "a broken object", reader.errorKind());
}

void TreeChecker::addVisits(Frame& frame, std::uint64_t visits) const {
    frame.visits += visits;
    if (frame.visits > budget_) {
        failAtObject(frame.node, "shared objects that unfold to too many values", Kind::TooComplex);
    }
}

void TreeChecker::open(std::uint32_t object) {
    Node& node = nodes_[object];
    if (node.heightOrShape == kOpen) {
        failAtObject(object, "a container that holds itself", Kind::Cyclic);
    }
    if (depth_ == frames_.size()) {
        failAtObject(object, "nested deeper than the limit", Kind::TooDeep);
    }
    node.heightOrShape = kOpen;
    Frame& frame = frames_[depth_++];
    frame = {object, 0, node.length};
    if (node.type == Type::Dictionary) {
        checkKeys(frame);
        frame.next = node.length;
        frame.count = 2 * node.length;
    }
    addVisits(frame, 1);
}

void TreeChecker::checkKeys(Frame& frame) {
    const Node& dictionary = nodes_[frame.node];
    const std::string_view keys(bytes_.data() + dictionary.offset, dictionary.length * width_);
    // Dictionaries of one kind follow each other, and writers share equal keys.
    if (keys != lastKeys_) {
        lastKeyVisits_ = 0;
        for (std::uint32_t i = 0; i < dictionary.length; ++i) {
            const std::uint64_t key = referenceAt(dictionary, i);
            if (key >= nodes_.size() || nodes_[key].type != Type::String) {
                failAtObject(frame.node, "a key that is no string", Kind::Malformed);
            }
            if (nodes_[key].form == Form::Broken) {
                failAtBrokenObject(key);
            }
            lastKeyVisits_ += nodes_[key].extent;
        }
        lastKeys_ = keys;
    }
    addVisits(frame, lastKeyVisits_);
}

// Looks at the references of a container up to one that leads to a container not yet checked.
void TreeChecker::checkValues(Frame& frame) {
    const Node& container = nodes_[frame.node];
    // Whoever reads an array makes something of each element, however small it is in the file.
    const std::size_t price =
        container.type == Type::Array ? PropertyListDocument::kVisitsPerElement : 0;
    while (frame.next < frame.count) {
        const std::uint64_t object = referenceAt(container, frame.next);
        if (object >= nodes_.size()) {
            failAtObject(frame.node, "a reference to no object", Kind::Malformed);
        }
        const Node& node = nodes_[object];
        if (node.form == Form::Broken) {
            failAtBrokenObject(object);
        }
        if (node.extent == 0) {
            open(static_cast<std::uint32_t>(object));
            return;
        }
        addVisits(frame, node.extent + price);
        frame.height = std::max(frame.height, node.heightOrShape);
        ++frame.next;
    }
    close();
}

void TreeChecker::close() {
    const Frame& frame = frames_[--depth_];
    Node& node = nodes_[frame.node];
    node.heightOrShape = static_cast<std::uint16_t>(frame.height + 1);
    node.extent = static_cast<std::uint32_t>(frame.visits);
    if (node.heightOrShape > PropertyListDocument::kMaximumDepth) {
        failAtObject(frame.node, "nested deeper than the limit", Kind::TooDeep);
    }
}

void TreeChecker::check(std::uint32_t root) {
    if (nodes_[root].form == Form::Broken) {
        failAtBrokenObject(root);
    }
    if (nodes_[root].extent == 0) {
        open(root);
    }
    while (depth_ > 0) {
        checkValues(frames_[depth_ - 1]);
    }
}

Trailer readTrailer(const ByteReader& bytes) {
    if (bytes.size() < kHeaderSize + kTrailerSize + 2) {
        failPropertyList(Kind::Malformed, bytes.size(), "a binary property list that is cut off");
    }
    const std::size_t start = bytes.size() - kTrailerSize;
    const auto number = [&](std::size_t at, std::size_t width) {
        return bigEndianNumber(bytes.data() + start + at, width);
    };
    const Trailer trailer{number(6, 1), number(7, 1), number(8, 8), number(16, 8), number(24, 8)};
    const auto require = [&](bool holds, std::size_t at, const char* text) {
        if (!holds) {
            failPropertyList(Kind::Malformed, start + at, text);
        }
    };
    const auto isWidth = [](std::uint64_t width) { return width >= 1 && width <= kWidestNumber; };
    require(isWidth(trailer.offsetWidth), 6, "offsets that are not 1 to 8 bytes wide");
    require(isWidth(trailer.referenceWidth), 7, "references that are not 1 to 8 bytes wide");
    require(trailer.tableOffset > kHeaderSize && trailer.tableOffset < start,
            24,
            "an offset table that lies outside the file");
    // Each object takes at least a byte of its own and an entry of the table.
    require(trailer.objectCount <= trailer.tableOffset - kHeaderSize &&
                trailer.objectCount <= (start - trailer.tableOffset) / trailer.offsetWidth,
            8,
            "more objects than the file has room for");
    require(trailer.root < trailer.objectCount, 16, "a root that is no object");
    return trailer;
}

}  // namespace

void readBinaryPropertyList(PropertyListState& state) {
    const ByteReader bytes(state.bytes.view());
    const Trailer trailer = readTrailer(bytes);
    ObjectReader objects(bytes, trailer);
    state.nodes.resize(trailer.objectCount);
    const char* table = bytes.data() + trailer.tableOffset;
    for (std::size_t i = 0; i < trailer.objectCount; ++i) {
        const std::uint64_t offset =
            bigEndianNumber(table + i * trailer.offsetWidth, trailer.offsetWidth);
        if (objects.read(offset, state.nodes[i]) != nullptr) {
            state.nodes[i].form = Form::Broken;
        }
    }
    if (objects.payloadRead() > bytes.size()) {
        failPropertyList(Kind::TooComplex, trailer.tableOffset, "objects that lie over each other");
    }
    state.setReferenceWidth(static_cast<std::uint8_t>(trailer.referenceWidth));
    state.root = static_cast<std::uint32_t>(trailer.root);
    TreeChecker(state, bytes, trailer).check(state.root);
}

}  // namespace quillet::platform
