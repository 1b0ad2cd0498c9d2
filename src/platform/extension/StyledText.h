#pragma once

#include <optional>
#include <string>

namespace quillet::platform {

// A text that can have a look: its characters and, where it has one, the HTML that says so. UTF-8.
struct StyledText {
    // A plain text in whose HTML each link (see LinkDetector.h) is one anchor.
    static StyledText withLinks(std::string string);

    std::string string;               // without markup; may be left out where there is HTML
    std::optional<std::string> html;  // a whole document or a part of one

    bool hasHtml() const noexcept { return html && !html->empty(); }
    bool isEmpty() const noexcept { return !hasHtml() && string.empty(); }

    // The text as HTML. What has HTML keeps it as it is: whoever shows it treats it like that of a
    // stranger's message. A plain text keeps its characters, lines, blanks and tabulators.
    std::string htmlRepresentation() const;
    // The text without markup, also where only its HTML is there; that is then read on one line.
    std::string plainString() const;
};

}  // namespace quillet::platform
