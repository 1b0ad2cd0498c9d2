#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/foundation/ByteScan.h"
#include "platform/foundation/PropertyListState.h"
#include "platform/foundation/PropertyListXmlText.h"
#include "platform/foundation/Utf8.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;
using Type = PropertyListType;

constexpr std::string_view kDoctype = "<!DOCTYPE";

struct Tag {
    std::string_view name;
    bool empty = false;  // <name/>
};

struct Content {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    bool escaped = false;
};

// Reads a checked UTF-8 text, behind whose end stand zero bytes, into the tape of nodes.
class XmlReader {
public:
    XmlReader(PropertyListState& state, std::size_t size)
        : nodes_(state.nodes), base_(state.text), at_(base_), end_(base_ + size) {}

    void read();

private:
    struct OpenContainer {
        std::uint32_t node = 0;
        std::uint32_t count = 0;
        bool dictionary = false;
    };

    [[noreturn]] void fail(std::string text) const { failAt(at_, std::move(text)); }
    [[noreturn]] void failAt(const char* place,
                             std::string text,
                             Kind kind = Kind::Malformed) const {
        failPropertyList(kind, static_cast<std::size_t>(place - base_), std::move(text));
    }

    std::string_view rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
    std::uint32_t offsetOf(const char* place) const {
        return static_cast<std::uint32_t>(place - base_);
    }

    void skipSpace();
    void skipSpaceAndComments();
    void skipPast(std::string_view start, std::string_view ending);
    void skipQuoted();
    void skipDoctype();
    void skipInternalSubset();
    void skipAttributes();
    void readProlog();

    Tag readOpeningTag();
    void readClosingTag(std::string_view name);
    Content readContent(const Tag& tag);
    void skipMarkupInContent(std::string_view name);
    std::string_view plainText(const Content& content);

    void readTree();
    void readKey();
    void readValue();
    void readText(const Tag& tag);
    void readInteger(const Tag& tag);
    void readReal(const Tag& tag);
    void readDate(const Tag& tag);
    void readData(const Tag& tag);
    void readBoolean(const Tag& tag);
    void openContainer(const Tag& tag, bool dictionary);
    void closeContainer();

    Node& addNode(Type type, Form form);
    void addNumber(Type type, std::uint64_t bits, Form form = Form::Signed);

    std::vector<Node>& nodes_;
    const char* const base_;
    const char* at_;
    const char* const end_;
    std::array<OpenContainer, PropertyListDocument::kMaximumDepth> open_{};
    std::size_t depth_ = 0;
    std::string scratch_;
};

void XmlReader::skipSpace() {
    while (isXmlSpace(*at_)) {
        ++at_;
    }
}

void XmlReader::skipPast(std::string_view start, std::string_view ending) {
    const std::size_t found = rest().find(ending, start.size());
    if (found == std::string_view::npos) {
        fail("\"" + std::string(start) + "\" without its \"" + std::string(ending) + "\"");
    }
    at_ += found + ending.size();
}

void XmlReader::skipSpaceAndComments() {
    for (skipSpace(); *at_ == '<'; skipSpace()) {
        if (at_[1] == '?') {
            skipPast("<?", "?>");
        } else if (rest().starts_with("<!--")) {
            skipPast("<!--", "-->");
        } else {
            return;
        }
    }
}

void XmlReader::skipQuoted() {
    const std::size_t closing = rest().find(*at_, 1);
    if (closing == std::string_view::npos) {
        fail("a quotation mark without its partner");
    }
    at_ += closing + 1;
}

void XmlReader::skipDoctype() {
    const char* start = at_;
    at_ += kDoctype.size();
    while (*at_ != '>') {
        if (*at_ == '[') {
            skipInternalSubset();
        } else if (*at_ == '"' || *at_ == '\'') {
            skipQuoted();
        } else if (at_ == end_ || *at_ == '<') {
            failAt(start, "a document type without its \">\"");
        } else {
            ++at_;
        }
    }
    ++at_;
}

void XmlReader::skipInternalSubset() {
    const char* start = at_;
    while (*at_ != ']') {
        if (rest().starts_with("<!ENTITY")) {
            failAt(at_, "an entity declaration, which is not allowed", Kind::EntityDeclared);
        }
        if (rest().starts_with("<!--")) {
            skipPast("<!--", "-->");
        } else if (rest().starts_with("<?")) {
            skipPast("<?", "?>");
        } else if (*at_ == '"' || *at_ == '\'') {
            skipQuoted();
        } else if (at_ == end_) {
            failAt(start, "a document type subset without its \"]\"");
        } else {
            ++at_;
        }
    }
    ++at_;
}

// From behind the name of a tag to its ">" or "/>".
void XmlReader::skipAttributes() {
    while (*at_ != '>' && *at_ != '/') {
        if (*at_ == '"' || *at_ == '\'') {
            skipQuoted();
        } else if (at_ == end_ || *at_ == '<') {
            fail("a tag without its \">\"");
        } else {
            ++at_;
        }
    }
}

Tag XmlReader::readOpeningTag() {
    if (*at_ != '<') {
        fail(at_ == end_ ? "the file ends where an element is expected"
                         : "text where an element is expected");
    }
    if (at_[1] == '/') {
        fail("a closing tag where an element is expected");
    }
    const char* name = ++at_;
    while (*at_ > ' ' && *at_ != '>' && *at_ != '/' && *at_ != '<') {
        ++at_;
    }
    Tag tag{{name, static_cast<std::size_t>(at_ - name)}};
    if (*at_ != '>') {
        skipAttributes();
        tag.empty = *at_ == '/';
        at_ += tag.empty ? 1 : 0;
        if (*at_ != '>') {
            fail("a tag without its \">\"");
        }
    }
    ++at_;
    return tag;
}

void XmlReader::readClosingTag(std::string_view name) {
    const char* start = at_;
    if (rest().starts_with("</") && rest().substr(2).starts_with(name)) {
        at_ += 2 + name.size();
        skipSpace();
        if (*at_ == '>') {
            ++at_;
            return;
        }
    }
    failAt(start, "no \"</" + std::string(name) + ">\" where it is expected");
}

void XmlReader::skipMarkupInContent(std::string_view name) {
    if (rest().starts_with("<![CDATA[")) {
        skipPast("<![CDATA[", "]]>");
    } else if (rest().starts_with("<!--")) {
        skipPast("<!--", "-->");
    } else if (rest().starts_with("<?")) {
        skipPast("<?", "?>");
    } else {
        fail("an element inside <" + std::string(name) + ">");
    }
}

// The text between a tag and its closing tag, both passed.
Content XmlReader::readContent(const Tag& tag) {
    const char* start = at_;
    Content content{offsetOf(start)};
    if (tag.empty) {
        return content;
    }
    for (;;) {
        at_ = findMarkup(at_);
        if (*at_ == '<' && at_[1] == '/') {
            content.length = offsetOf(at_) - content.offset;
            readClosingTag(tag.name);
            return content;
        }
        content.escaped = true;
        if (*at_ == '<') {
            skipMarkupInContent(tag.name);
        } else if (*at_ == '\r') {
            ++at_;
        } else if (*at_ == '&') {
            const auto reference = xmlReferenceAtStart(rest());
            if (!reference) {
                fail("no valid character or entity reference behind \"&\"");
            }
            at_ += reference->length;
        } else {
            fail("the file ends within <" + std::string(tag.name) + ">");
        }
    }
}

// The text that a content stands for, valid until the next call.
std::string_view XmlReader::plainText(const Content& content) {
    const std::string_view text(base_ + content.offset, content.length);
    if (!content.escaped) {
        return text;
    }
    scratch_.clear();
    appendUnescapedXml(text, scratch_);
    return scratch_;
}

Node& XmlReader::addNode(Type type, Form form) {
    Node& node = nodes_.emplace_back();
    node.type = type;
    node.form = form;
    node.extent = static_cast<std::uint32_t>(nodes_.size());
    return node;
}

void XmlReader::addNumber(Type type, std::uint64_t bits, Form form) {
    addNode(type, form).setBits(bits);
}

void XmlReader::readText(const Tag& tag) {
    const Content content = readContent(tag);
    Node& node = addNode(Type::String, content.escaped ? Form::Escaped : Form::Plain);
    node.offset = content.offset;
    node.length = content.length;
}

void XmlReader::readInteger(const Tag& tag) {
    const char* start = at_;
    const auto number = integerOfXmlText(plainText(readContent(tag)));
    if (!number) {
        failAt(start, "no integer of 64 bits inside <integer>");
    }
    const bool isUnsigned = number->kind() == Number::Kind::Unsigned;
    addNumber(
        Type::Integer, number->unsignedIntegerValue(), isUnsigned ? Form::Unsigned : Form::Signed);
}

void XmlReader::readReal(const Tag& tag) {
    const char* start = at_;
    const auto number = realOfXmlText(plainText(readContent(tag)));
    if (!number) {
        failAt(start, "no number inside <real>");
    }
    addNumber(Type::Real, std::bit_cast<std::uint64_t>(*number));
}

void XmlReader::readDate(const Tag& tag) {
    const char* start = at_;
    const auto date = dateOfXmlText(plainText(readContent(tag)));
    if (!date) {
        failAt(start, "no date of the form YYYY-MM-DDTHH:MM:SSZ inside <date>");
    }
    addNumber(Type::Date, std::bit_cast<std::uint64_t>(*date));
}

void XmlReader::readData(const Tag& tag) {
    const char* start = at_;
    const Content content = readContent(tag);
    if (!isBase64(plainText(content))) {
        failAt(start, "no base64 inside <data>");
    }
    Node& node = addNode(Type::Data, content.escaped ? Form::Escaped : Form::Base64);
    node.offset = content.offset;
    node.length = content.length;
}

void XmlReader::readBoolean(const Tag& tag) {
    const char* start = at_;
    if (!trimmedXmlSpace(plainText(readContent(tag))).empty()) {
        failAt(start, "text inside <" + std::string(tag.name) + ">");
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
        open_[depth_++] = {index, 0, dictionary};
    }
}

void XmlReader::closeContainer() {
    const OpenContainer& container = open_[--depth_];
    readClosingTag(container.dictionary ? "dict" : "array");
    Node& node = nodes_[container.node];
    node.length = container.count;
    node.extent = static_cast<std::uint32_t>(nodes_.size());
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

// One value with everything in it; without recursion, so that no file decides the stack's depth.
void XmlReader::readTree() {
    readValue();
    while (depth_ > 0) {
        skipSpaceAndComments();
        OpenContainer& container = open_[depth_ - 1];
        if (*at_ == '<' && at_[1] == '/') {
            closeContainer();
            continue;
        }
        if (container.dictionary) {
            readKey();
            skipSpaceAndComments();
        }
        ++container.count;
        readValue();
    }
}

void XmlReader::readProlog() {
    if (rest().starts_with(kUtf8ByteOrderMark)) {
        at_ += kUtf8ByteOrderMark.size();
    }
    skipSpaceAndComments();
    if (rest().starts_with(kDoctype)) {
        skipDoctype();
        skipSpaceAndComments();
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
    checkXmlCharacters({state.text, size});
    XmlReader(state, size).read();
    state.root = 0;
}

}  // namespace quillet::platform
