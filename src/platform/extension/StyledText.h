#pragma once

#include <optional>
#include <string>

namespace quillet::platform {

// A text that may have a format: its characters, and HTML if it has one. UTF-8.
struct StyledText {
    // A plain text with HTML in which each link (see LinkDetector.h) is an anchor; without HTML if
    // the text has no link.
    static StyledText withLinks(std::string string);

    std::string string;               // without markup; may be empty if there is HTML
    std::optional<std::string> html;  // a whole document or a part of one

    bool hasHtml() const noexcept { return html && !html->empty(); }
    bool isEmpty() const noexcept { return !hasHtml() && string.empty(); }

    // The text as HTML. Existing HTML is returned unchanged: whoever shows it must treat it like a
    // stranger's message. In a plain text characters, line breaks, blanks and tabulators are kept.
    std::string htmlRepresentation() const;
    // The text without markup. If there is only HTML, its text on one line (see HtmlText.h).
    std::string plainString() const;
};

}  // namespace quillet::platform
