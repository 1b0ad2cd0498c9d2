#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/plist/PropertyListBinaryObjects.h"
#include "platform/plist/PropertyListState.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;
using Trailer = BinaryTrailer;
using Type = PropertyListType;

constexpr std::size_t kTrailerSize = 32;
// Marks a container that is being walked, in place of its height.
constexpr std::uint16_t kOpen = 0xFFFF;

// Walks once over every object that the root leads to, and finds for every container how deep it is
// and how many values it unfolds to.
class TreeChecker {
public:
    TreeChecker(PropertyListState& state, std::string_view bytes, const Trailer& trailer)
        : nodes_(state.nodes),
          bytes_(bytes),
          trailer_(trailer),
          width_(trailer.referenceWidth),
          budget_(PropertyListDocument::kVisitsBase + bytes.size()),
          textsCountOnce_(state.sharedBytes == PropertyListDocument::SharedBytes::Once) {}

    void check(std::uint32_t root);

private:
    struct Frame {
        std::uint32_t node = 0;
        std::uint32_t next = 0;    // the next reference to check
        std::uint32_t count = 0;   // of all references
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
    std::string_view bytes_;
    const Trailer& trailer_;
    std::size_t width_;
    std::uint64_t budget_;
    bool textsCountOnce_;
    std::array<Frame, PropertyListDocument::kMaximumDepth> frames_{};
    std::size_t depth_ = 0;
    std::string_view lastKeys_;  // the key references of the last dictionary
    std::uint64_t lastKeyVisits_ = 0;
};

std::uint64_t TreeChecker::offsetOf(std::uint64_t object) const {
    return bigEndianNumber(bytes_.data() + trailer_.tableOffset + object * trailer_.offsetWidth,
                           trailer_.offsetWidth);
}

// The place of the error is the object or, if the offset table points outside the objects, its
// entry there.
void TreeChecker::failAtObject(std::uint64_t object, std::string text, Kind kind) const {
    const std::uint64_t offset = offsetOf(object);
    const bool inside = offset >= kBinaryHeaderSize && offset < trailer_.tableOffset;
    const std::uint64_t entry = trailer_.tableOffset + object * trailer_.offsetWidth;
    failPropertyList(kind, inside ? offset : entry, std::move(text));
}

void TreeChecker::failAtBrokenObject(std::uint64_t object) const {
    BinaryObjectReader reader(bytes_, trailer_);
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
    // Dictionaries of the same kind often follow each other, and writers share equal keys.
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

// Checks the references of a container, up to the first one to a container that is not checked yet.
void TreeChecker::checkValues(Frame& frame) {
    const Node& container = nodes_[frame.node];
    // A reader of an array does some work for each element, however small it is in the file.
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
        const bool isCounted = node.isContainer() || !textsCountOnce_ ||
                               node.length > PropertyListDocument::kMaximumSharedBytes;
        addVisits(frame, (isCounted ? node.extent : 1) + price);
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

Trailer readTrailer(std::string_view bytes) {
    if (bytes.size() < kBinaryHeaderSize + kTrailerSize + 2) {
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
    const auto isWidth = [](std::uint64_t width) {
        return width >= 1 && width <= kWidestBinaryNumber;
    };
    require(isWidth(trailer.offsetWidth), 6, "offsets that are not 1 to 8 bytes wide");
    require(isWidth(trailer.referenceWidth), 7, "references that are not 1 to 8 bytes wide");
    require(trailer.tableOffset > kBinaryHeaderSize && trailer.tableOffset < start,
            24,
            "an offset table that lies outside the file");
    // Each object takes at least a byte of its own and an entry of the table.
    require(trailer.objectCount <= trailer.tableOffset - kBinaryHeaderSize &&
                trailer.objectCount <= (start - trailer.tableOffset) / trailer.offsetWidth,
            8,
            "more objects than the file has room for");
    require(trailer.root < trailer.objectCount, 16, "a root that is no object");
    if (trailer.objectCount > PropertyListDocument::kMaximumValues) {
        failPropertyList(Kind::TooComplex, start + 8, "more objects than the limit");
    }
    return trailer;
}

}  // namespace

void readBinaryPropertyList(PropertyListState& state) {
    const std::string_view bytes = state.bytes.view();
    const Trailer trailer = readTrailer(bytes);
    BinaryObjectReader objects(bytes, trailer);
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
    state.longestText = objects.longestText();
    state.setReferenceWidth(static_cast<std::uint8_t>(trailer.referenceWidth));
    state.root = static_cast<std::uint32_t>(trailer.root);
    TreeChecker(state, bytes, trailer).check(state.root);
}

}  // namespace quillet::platform
