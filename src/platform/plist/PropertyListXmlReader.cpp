#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/base/Ascii.h"
#include "platform/base/TextFormat.h"
#include "platform/plist/ByteScan.h"
#include "platform/plist/PropertyListState.h"
#include "platform/plist/PropertyListXmlCursor.h"
#include "platform/plist/PropertyListXmlGaps.h"
#include "platform/plist/PropertyListXmlText.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;
using Tag = XmlTag;
using Type = PropertyListType;

// Reads a UTF-8 text that ByteBuffer's padding follows into the tape of nodes.
class XmlReader : XmlCursor {
public:
    XmlReader(PropertyListState& state, std::size_t size)
        : XmlCursor(state.text, size), nodes_(state.nodes), gaps_(state.text, size) {}

    void read();

private:
    struct OpenContainer {
        std::uint32_t node = 0;
        std::uint32_t count = 0;
        bool dictionary = false;
        std::string_view name;  // of the tag
    };

    std::string_view plainText(const Node& content);
    std::string_view readPlainContent(const Tag& tag);

    void readTree();
    void readEntry();
    bool readRepeatedEntry();
    void readRepeatedText(const Tag& tag);
    bool openNextDictionary();
    void readKey();
    void readValue();
    void readText(const Tag& tag);
    bool readPlainInteger();
    void readInteger(const Tag& tag);
    void readReal(const Tag& tag);
    void readDate(const Tag& tag);
    void readData(const Tag& tag);
    void readBoolean(const Tag& tag);
    void openContainer(const Tag& tag, bool dictionary);
    void closeContainer();
    void finishContainer();

    // The node is filled in place: copying a node that was just written is slow.
    Node& addNode(Type type, Form form) {
        Node& node = nodes_.emplace_back();
        node.type = type;
        node.form = form;
        node.extent = static_cast<std::uint32_t>(nodes_.size());
        return node;
    }
    void addNumber(Type type, std::uint64_t bits, Form form = Form::Signed) {
        addNode(type, form).setBits(bits);
    }

    std::vector<Node>& nodes_;
    std::array<OpenContainer, PropertyListDocument::kMaximumDepth> open_{};
    std::size_t depth_ = 0;
    XmlGaps gaps_;
    std::string scratch_;
};

// The unescaped text of a content, valid until the next call.
std::string_view XmlReader::plainText(const Node& content) {
    const std::string_view text(base_ + content.offset, content.length);
    if (content.form != Form::Escaped) {
        return text;
    }
    scratch_.clear();
    appendUnescapedXml(text, scratch_);
    return scratch_;
}

std::string_view XmlReader::readPlainContent(const Tag& tag) {
    Node content;
    readContent(tag, content);
    return plainText(content);
}

void XmlReader::readText(const Tag& tag) {
    readContent(tag, addNode(Type::String, Form::Plain));
}

// Reads up to 18 digits that are directly followed by the closing tag. Returns false and reads
// nothing for every other form of integer.
bool XmlReader::readPlainInteger() {
    constexpr std::ptrdiff_t kMostDigits = 18;
    const char* digit = at_;
    std::uint64_t value = 0;
    for (; *digit >= '0' && *digit <= '9'; ++digit) {
        value = value * 10 + static_cast<std::uint64_t>(*digit - '0');
    }
    if (digit == at_ || digit - at_ > kMostDigits) {
        return false;
    }
    constexpr std::string_view kClosingTag = "</integer>";
    if (std::memcmp(digit, kClosingTag.data(), kClosingTag.size()) != 0) {
        return false;
    }
    at_ = digit + kClosingTag.size();
    addNumber(Type::Integer, value);
    return true;
}

void XmlReader::readInteger(const Tag& tag) {
    if (!tag.empty && readPlainInteger()) {
        return;
    }
    const char* start = at_;
    const auto number = integerOfXmlText(readPlainContent(tag));
    if (!number) {
        failAt(start, "no integer of 64 bits inside <integer>");
    }
    const bool isUnsigned = number->kind() == Number::Kind::Unsigned;
    addNumber(
        Type::Integer, number->unsignedIntegerValue(), isUnsigned ? Form::Unsigned : Form::Signed);
}

void XmlReader::readReal(const Tag& tag) {
    const char* start = at_;
    const auto number = realOfXmlText(readPlainContent(tag));
    if (!number) {
        failAt(start, "no number inside <real>");
    }
    addNumber(Type::Real, std::bit_cast<std::uint64_t>(*number));
}

void XmlReader::readDate(const Tag& tag) {
    const char* start = at_;
    const auto date = dateOfXmlText(readPlainContent(tag));
    if (!date) {
        failAt(start, "no date of the form YYYY-MM-DDTHH:MM:SSZ inside <date>");
    }
    addNumber(Type::Date, std::bit_cast<std::uint64_t>(*date));
}

void XmlReader::readData(const Tag& tag) {
    const char* start = at_;
    Node& data = addNode(Type::Data, Form::Base64);
    readContent(tag, data);
    if (!isBase64(plainText(data))) {
        failAt(start, "no base64 inside <data>");
    }
}

void XmlReader::readBoolean(const Tag& tag) {
    const char* start = at_;
    if (!trimmed(readPlainContent(tag), kXmlSpaces).empty()) {
        failAt(start, formatText("text inside <%@>", {tag.name}));
    }
    addNumber(Type::Boolean, tag.name == "true" ? 1 : 0);
}

void XmlReader::openContainer(const Tag& tag, bool dictionary) {
    const auto index = static_cast<std::uint32_t>(nodes_.size());
    addNode(dictionary ? Type::Dictionary : Type::Array, Form::Plain);
    if (depth_ == open_.size()) {
        failAt(tag.name.data() - 1, "nested deeper than the limit", Kind::TooDeep);
    }
    if (!tag.empty) {
        open_[depth_++] = {index, 0, dictionary, tag.name};
    }
}

void XmlReader::closeContainer() {
    readClosingTag(open_[depth_ - 1].name);
    finishContainer();
}

void XmlReader::finishContainer() {
    const OpenContainer& container = open_[--depth_];
    Node& node = nodes_[container.node];
    node.length = container.count;
    node.extent = static_cast<std::uint32_t>(nodes_.size());
    const bool flat = node.extent == container.node + 1 + 2 * container.count;
    if (container.dictionary && flat && container.count <= XmlGaps::kMostGaps) {
        node.heightOrShape = gaps_.shape();
    }
}

void XmlReader::readValue() {
    const char* start = at_;
    const Tag tag = readOpeningTag();
    if (tag.name == "string") {
        readText(tag);
    } else if (tag.name == "integer") {
        readInteger(tag);
    } else if (tag.name == "real") {
        readReal(tag);
    } else if (tag.name == "true" || tag.name == "false") {
        readBoolean(tag);
    } else if (tag.name == "dict") {
        openContainer(tag, true);
    } else if (tag.name == "array") {
        openContainer(tag, false);
    } else if (tag.name == "date") {
        readDate(tag);
    } else if (tag.name == "data") {
        readData(tag);
    } else {
        failAt(start, "no element of a property list");
    }
}

void XmlReader::readKey() {
    const char* start = at_;
    const Tag tag = readOpeningTag();
    if (tag.name != "key") {
        failAt(start, "a value without a key in a dictionary");
    }
    readText(tag);
}

// Reads the text of a string element after its opening tag. Plain text is by far the most frequent.
void XmlReader::readRepeatedText(const Tag& tag) {
    constexpr std::string_view kClosingTag = "</string>";
    const char* end = findTextStop(at_);
    if (std::memcmp(end, kClosingTag.data(), kClosingTag.size()) != 0) {
        readText(tag);
        return;
    }
    Node& node = addNode(Type::String, Form::Plain);
    node.offset = offsetOf(at_);
    node.length = static_cast<std::uint32_t>(end - at_);
    at_ = end + kClosingTag.size();
}

// Closes the open dictionary and opens the next one. Returns false and does nothing if they are not
// elements of an array.
bool XmlReader::openNextDictionary() {
    if (depth_ < 2 || open_[depth_ - 2].dictionary) {
        return false;
    }
    const Tag tag{open_[depth_ - 1].name};
    finishContainer();
    ++open_[depth_ - 1].count;
    openContainer(tag, true);
    return true;
}

// Reads a dictionary entry with the same gap as the last entry of its index. Returns false and
// reads nothing for any other entry.
bool XmlReader::readRepeatedEntry() {
    const XmlGap* gap = gaps_.repeatedAt(at_, open_[depth_ - 1].count);
    if (gap == nullptr || (gap->seam && !openNextDictionary())) {
        return false;
    }
    at_ += gap->length;
    ++open_[depth_ - 1].count;
    nodes_.push_back(gap->key);
    nodes_.back().extent = static_cast<std::uint32_t>(nodes_.size());
    if (gap->type == Type::String) {
        readRepeatedText(gap->tag);
    } else if (gap->type == Type::Integer) {
        readInteger(gap->tag);
    } else {
        skipSpaceAndComments();  // a gap that ends with the key does not include them
        readValue();
    }
    return true;
}

// Reads an entry of a dictionary, or its end.
void XmlReader::readEntry() {
    if (readRepeatedEntry()) {
        return;
    }
    const char* start = at_;
    skipSpaceAndComments();
    if (*at_ == '<' && at_[1] == '/') {
        const std::uint32_t entries = open_[depth_ - 1].count;
        closeContainer();
        if (depth_ > 0 && !open_[depth_ - 1].dictionary) {
            skipSpaceAndComments();
            gaps_.rememberSeam(start, at_, entries);
        }
        return;
    }
    readKey();
    skipSpaceAndComments();
    gaps_.remember(start, at_, open_[depth_ - 1].count++, nodes_.back());
    readValue();
}

// Reads one value with everything in it. It does not recurse, so no file decides the stack's depth.
void XmlReader::readTree() {
    readValue();
    while (depth_ > 0) {
        if (nodes_.size() > PropertyListDocument::kMaximumValues) {
            fail("more values than the limit", Kind::TooComplex);
        }
        if (open_[depth_ - 1].dictionary) {
            readEntry();
            continue;
        }
        skipSpaceAndComments();
        if (*at_ == '<' && at_[1] == '/') {
            closeContainer();
        } else {
            ++open_[depth_ - 1].count;
            readValue();
        }
    }
}

void XmlReader::read() {
    readProlog();
    const char* start = at_;
    const Tag tag = readOpeningTag();
    if (tag.name == "plist") {
        if (tag.empty) {
            failAt(start, "a property list without a value");
        }
        skipSpaceAndComments();
        readTree();
        skipSpaceAndComments();
        readClosingTag(tag.name);
    } else {
        at_ = start;
        readTree();
    }
    skipSpaceAndComments();
    if (at_ != end_) {
        fail("something behind the end of the property list");
    }
}

}  // namespace

void readXmlPropertyList(PropertyListState& state, std::size_t size) {
    XmlReader(state, size).read();
    state.root = 0;
}

}  // namespace quillet::platform
