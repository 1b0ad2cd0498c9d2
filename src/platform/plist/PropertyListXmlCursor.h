#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/plist/PropertyListState.h"
#include "platform/plist/PropertyListXmlText.h"

// Internal to the reader of XML property lists.
namespace quillet::platform {

struct XmlTag {
    std::string_view name;
    bool empty = false;  // <name/>
};

// A place in a UTF-8 text that ByteBuffer's padding follows. Reads tags and the text between them,
// and skips what has no meaning. Throws a failure when the text is not well-formed.
class XmlCursor {
protected:
    XmlCursor(const char* text, std::size_t size) : base_(text), at_(text), end_(text + size) {}

    [[noreturn]] void fail(std::string text,
                           PropertyListErrorKind kind = PropertyListErrorKind::Malformed) const {
        failAt(at_, std::move(text), kind);
    }
    [[noreturn]] void failAt(const char* place,
                             std::string text,
                             PropertyListErrorKind kind = PropertyListErrorKind::Malformed) const {
        failPropertyList(kind, static_cast<std::size_t>(place - base_), std::move(text));
    }

    std::string_view rest() const { return {at_, static_cast<std::size_t>(end_ - at_)}; }
    std::uint32_t offsetOf(const char* place) const {
        return static_cast<std::uint32_t>(place - base_);
    }

    void readProlog();
    void skipSpaceAndComments();
    XmlTag readOpeningTag();
    void readClosingTag(std::string_view name);
    // Sets the place and form of the text between a tag and its closing tag, and skips both.
    void readContent(const XmlTag& tag, PropertyListNode& content);

    const char* const base_;
    const char* at_;
    const char* const end_;

private:
    void skipSpace() {
        while (isXmlSpace(*at_)) {
            ++at_;
        }
    }
    void checkCharacters(const char* start) const;
    void skipPast(std::string_view start, std::string_view ending);
    void skipQuoted();
    void skipDoctype();
    void skipInternalSubset();
    void skipAttributes();
    void skipMarkupInContent(std::string_view name);
    // Skips a reference, a line end or markup that is not an element.
    void skipEscape(std::string_view name) {
        const std::size_t named = *at_ == '&' ? namedXmlReferenceAt(at_).length : 0;
        at_ += named;
        if (named == 0) {
            skipRareEscape(name);
        }
    }
    void skipRareEscape(std::string_view name);
};

}  // namespace quillet::platform
