#include "platform/plist/PropertyListXmlCursor.h"

#include "platform/base/TextFormat.h"
#include "platform/plist/ByteScan.h"
#include "platform/plist/PropertyListXmlText.h"

namespace quillet::platform {

namespace {

using Form = PropertyListForm;
using Kind = PropertyListErrorKind;
using Node = PropertyListNode;

constexpr std::string_view kDoctype = "<!DOCTYPE";

}  // namespace

// Checks the characters from `start` up to here. All text is checked here, except bytes that are
// equal to bytes checked before.
void XmlCursor::checkCharacters(const char* start) const {
    if (const auto error = firstXmlCharacterError(start, at_)) {
        const bool invalid = error->kind == Kind::InvalidText;
        failAt(error->place,
               invalid ? "a byte that is no valid UTF-8" : "a character that XML forbids",
               error->kind);
    }
}

void XmlCursor::skipPast(std::string_view start, std::string_view ending) {
    const char* from = at_;
    const std::size_t found = rest().find(ending, start.size());
    if (found == std::string_view::npos) {
        fail(formatText(R"("%@" without its "%@")", {start, ending}));
    }
    at_ += found + ending.size();
    checkCharacters(from);
}

void XmlCursor::skipSpaceAndComments() {
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

void XmlCursor::skipQuoted() {
    const std::size_t closing = rest().find(*at_, 1);
    if (closing == std::string_view::npos) {
        fail("a quotation mark without its partner");
    }
    at_ += closing + 1;
}

void XmlCursor::skipDoctype() {
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

void XmlCursor::skipInternalSubset() {
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

// Skips from the end of a tag's name to its ">" or "/>".
void XmlCursor::skipAttributes() {
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

void XmlCursor::readProlog() {
    if (rest().starts_with(kUtf8ByteOrderMark)) {
        at_ += kUtf8ByteOrderMark.size();
    }
    skipSpaceAndComments();
    if (rest().starts_with(kDoctype)) {
        skipDoctype();
        skipSpaceAndComments();
    }
}

XmlTag XmlCursor::readOpeningTag() {
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
    XmlTag tag{{name, static_cast<std::size_t>(at_ - name)}};
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

void XmlCursor::readClosingTag(std::string_view name) {
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

void XmlCursor::skipMarkupInContent(std::string_view name) {
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

void XmlCursor::skipRareEscape(std::string_view name) {
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

void XmlCursor::readContent(const XmlTag& tag, Node& content) {
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

}  // namespace quillet::platform
