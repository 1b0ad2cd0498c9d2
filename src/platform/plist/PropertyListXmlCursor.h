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

// A place in a text in UTF-8, behind whose end stand zero bytes. Reads tags and the text between
// them and passes everything that means nothing; what is not well-formed is thrown as a failure.
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
    // Sets place and form of the text between a tag and its closing tag, both passed.
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
    // Passes a reference, a line end or markup that is no element.
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
