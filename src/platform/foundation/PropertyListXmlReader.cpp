#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/ByteScan.h"
#include "platform/foundation/PropertyListState.h"
#include "platform/foundation/PropertyListXmlText.h"
#include "platform/foundation/TextFormat.h"
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

// The bytes from the end of an entry of a dictionary to the value of the next one, with what they
// mean. Dictionaries of one kind follow each other; their gaps are equal byte for byte, and
// comparing bytes is much faster than reading tags.
struct Gap {
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
    Node key;
    Type type = Type::Absent;  // of a value whose opening tag belongs to the gap
    Tag tag;
    bool seam = false;  // from the last entry of a dictionary to the first of the next in an array
};
constexpr std::size_t kLongestGap = 256;  // bytes
constexpr std::size_t kMostGaps = 64;     // entries of a dictionary
constexpr std::uint32_t kLargestShape = 0xFFFF;

// Reads a text in UTF-8, behind whose end stand zero bytes, into the tape of nodes.
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
        std::string_view name;  // of the tag
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

    void checkCharacters(const char* start) const;
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
    void readContent(const Tag& tag, Node& content);
    void skipMarkupInContent(std::string_view name);
    void skipEscape(std::string_view name);
    std::string_view plainText(const Node& content);
    std::string_view readPlainContent(const Tag& tag);

    void readTree();
    void readEntry();
    bool readRepeatedEntry();
    void readRepeatedText(const Tag& tag);
    void rememberGap(const char* start, const char* value);
    void rememberSeam(const char* start, std::uint32_t entries);
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

    Node& addNode(Type type, Form form);
    void addNumber(Type type, std::uint64_t bits, Form form = Form::Signed);

    std::vector<Node>& nodes_;
    const char* const base_;
    const char* at_;
    const char* const end_;
    std::array<OpenContainer, PropertyListDocument::kMaximumDepth> open_{};
    std::size_t depth_ = 0;
    std::array<Gap, kMostGaps> gaps_{};  // by the place of the entry in its dictionary
    std::uint32_t shape_ = 0;            // counts the changes of gaps_
    std::string scratch_;
};

void XmlReader::skipSpace() {
    while (isXmlSpace(*at_)) {
        ++at_;
    }
}

// Checks the characters from `start` up to here. Everything that is read comes by here but for
// what has been found equal to something checked before.
void XmlReader::checkCharacters(const char* start) const {
    if (const auto error = firstXmlCharacterError(start, at_)) {
        const bool invalid = error->kind == Kind::InvalidText;
        failAt(error->place,
               invalid ? "a byte that is no valid UTF-8" : "a character that XML forbids",
               error->kind);
    }
}

void XmlReader::skipPast(std::string_view start, std::string_view ending) {
    const char* from = at_;
    const std::size_t found = rest().find(ending, start.size());
    if (found == std::string_view::npos) {
        fail(formatText(R"("%@" without its "%@")", {start, ending}));
    }
    at_ += found + ending.size();
    checkCharacters(from);
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
    checkCharacters(start);
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
    const char* start = at_;
    while (*at_ != '>' && *at_ != '/') {
        if (*at_ == '"' || *at_ == '\'') {
            skipQuoted();
        } else if (at_ == end_ || *at_ == '<') {
            fail("a tag without its \">\"");
        } else {
            ++at_;
        }
    }
    checkCharacters(start);
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
    while (static_cast<unsigned char>(*at_) > ' ' && *at_ != '>' && *at_ != '/' && *at_ != '<') {
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
    if (at_[0] == '<' && at_[1] == '/' && sameBytes(at_ + 2, name.data(), name.size())) {
        const char* start = std::exchange(at_, at_ + 2 + name.size());
        skipSpace();
        if (*at_ == '>') {
            ++at_;
            return;
        }
        at_ = start;
    }
    fail(formatText("no \"</%@>\" where it is expected", {name}));
}

void XmlReader::skipMarkupInContent(std::string_view name) {
    if (rest().starts_with("<![CDATA[")) {
        skipPast("<![CDATA[", "]]>");
    } else if (rest().starts_with("<!--")) {
        skipPast("<!--", "-->");
    } else if (rest().starts_with("<?")) {
        skipPast("<?", "?>");
    } else {
        fail(formatText("an element inside <%@>", {name}));
    }
}

// Passes a reference, a line end or markup that is no element.
void XmlReader::skipEscape(std::string_view name) {
    if (*at_ == '<') {
        skipMarkupInContent(name);
    } else if (*at_ == '\r') {
        ++at_;
    } else if (*at_ == '&') {
        const auto reference = xmlReferenceAtStart(rest());
        if (!reference) {
            fail("no valid character or entity reference behind \"&\"");
        }
        at_ += reference->length;
    } else {
        fail(at_ == end_ ? formatText("the file ends within <%@>", {name})
                         : "a character that XML forbids");
    }
}

// Sets place and form of the text between a tag and its closing tag, both passed.
void XmlReader::readContent(const Tag& tag, Node& content) {
    const char* const start = at_;
    content.offset = offsetOf(start);
    if (tag.empty) {
        return;
    }
    bool ascii = true;
    for (;;) {
        at_ = ascii ? findTextStop(at_) : findMarkup(at_);
        if (*at_ == '<' && at_[1] == '/') {
            break;
        }
        if (*at_ == '<' || *at_ == '&' || *at_ == '\r' || *at_ == '\0') {
            content.form = Form::Escaped;
            skipEscape(tag.name);
        } else {
            ascii = false;
        }
    }
    content.length = static_cast<std::uint32_t>(at_ - start);
    if (!ascii) {
        checkCharacters(start);
    }
    readClosingTag(tag.name);
}

// The text that a content stands for, valid until the next call.
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

// The node is filled where it lies: copying one that has just been put together is slow.
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
    readContent(tag, addNode(Type::String, Form::Plain));
}

// Takes up to 18 digits that the closing tag follows at once; false, with nothing read, for
// everything else that an integer may look like.
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
    if (!trimmedXmlSpace(readPlainContent(tag)).empty()) {
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
    if (container.dictionary && flat && container.count <= kMostGaps) {
        node.heightOrShape = shape_ <= kLargestShape ? static_cast<std::uint16_t>(shape_) : 0;
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

void XmlReader::rememberGap(const char* start, const char* value) {
    OpenContainer& container = open_[depth_ - 1];
    const std::size_t index = container.count;
    const auto tagged = [&](std::string_view tag) {
        return std::string_view(value, static_cast<std::size_t>(end_ - value)).starts_with(tag);
    };
    ++shape_;
    if (index >= gaps_.size()) {
        return;
    }
    Gap& gap = gaps_[index];
    if (value - start > static_cast<std::ptrdiff_t>(kLongestGap)) {
        gap = {};
        return;
    }
    gap = {offsetOf(start), offsetOf(value) - offsetOf(start), nodes_.back(), Type::Absent, {}};
    if (tagged("<string>")) {
        gap.type = Type::String;
        gap.tag.name = {value + 1, 6};
    } else if (tagged("<integer>")) {
        gap.type = Type::Integer;
        gap.tag.name = {value + 1, 7};
    }
    if (gap.type != Type::Absent) {
        gap.length += static_cast<std::uint32_t>(gap.tag.name.size() + 2);
    }
}

// The text of a string element whose opening tag has been passed. A plain one is by far the most
// frequent.
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

// Closes the dictionary that is open and opens another one behind it; false, with nothing done,
// where they do not lie in an array.
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

// Behind the end of a dictionary: where the same gap opens the next one as opened this one,
// remembers all from `start`, the end of its last entry, as one gap.
void XmlReader::rememberSeam(const char* start, std::uint32_t entries) {
    constexpr std::string_view kOpeningTag = "<dict>";
    if (depth_ == 0 || open_[depth_ - 1].dictionary || entries >= gaps_.size()) {
        return;
    }
    skipSpaceAndComments();
    const Gap& first = gaps_[0];
    const char* entry = at_ + kOpeningTag.size();
    if (!rest().starts_with(kOpeningTag) || first.seam || first.length == 0 ||
        end_ - entry < static_cast<std::ptrdiff_t>(first.length) ||
        !sameBytes(entry, base_ + first.offset, first.length)) {
        return;
    }
    const std::ptrdiff_t length = entry + first.length - start;
    if (entries > 0 && length <= static_cast<std::ptrdiff_t>(kLongestGap)) {
        ++shape_;
        Gap& seam = gaps_[entries];
        seam = first;
        seam.offset = offsetOf(start);
        seam.length = static_cast<std::uint32_t>(length);
        seam.seam = true;
    }
}

// An entry of a dictionary whose gap is the one that stood at its place before; false, with
// nothing read, for any other.
bool XmlReader::readRepeatedEntry() {
    OpenContainer& container = open_[depth_ - 1];
    if (container.count >= gaps_.size()) {
        return false;
    }
    const Gap& gap = gaps_[container.count];
    if (gap.length == 0 || end_ - at_ < static_cast<std::ptrdiff_t>(gap.length) ||
        !sameBytes(at_, base_ + gap.offset, gap.length)) {
        return false;
    }
    // A seam stands for the first gap that it was made from, which may have been replaced since.
    if (gap.seam && (gap.key.offset != gaps_[0].key.offset || !openNextDictionary())) {
        return false;
    }
    at_ += gap.length;
    ++open_[depth_ - 1].count;
    nodes_.push_back(gap.key);
    nodes_.back().extent = static_cast<std::uint32_t>(nodes_.size());
    if (gap.type == Type::String) {
        readRepeatedText(gap.tag);
    } else if (gap.type == Type::Integer) {
        readInteger(gap.tag);
    } else {
        readValue();
    }
    return true;
}

// An entry of a dictionary, or the end of it.
void XmlReader::readEntry() {
    if (readRepeatedEntry()) {
        return;
    }
    const char* start = at_;
    skipSpaceAndComments();
    if (*at_ == '<' && at_[1] == '/') {
        const std::uint32_t entries = open_[depth_ - 1].count;
        closeContainer();
        rememberSeam(start, entries);
        return;
    }
    readKey();
    skipSpaceAndComments();
    rememberGap(start, at_);
    ++open_[depth_ - 1].count;
    readValue();
}

// One value with everything in it; without recursion, so that no file decides the stack's depth.
void XmlReader::readTree() {
    readValue();
    while (depth_ > 0) {
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
    XmlReader(state, size).read();
    state.root = 0;
}

}  // namespace quillet::platform
