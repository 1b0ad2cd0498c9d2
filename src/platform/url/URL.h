#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A URI reference (RFC 3986) that keeps the text it was made from. A value type, for any thread.
// Views that it hands out live as long as the URL that was asked.
class URL {
public:
    // None where `text` is empty or no valid reference. "[" and "]" are tolerated in a query; raw
    // non-ASCII characters and a "%" without two hexadecimal digits are not, anywhere.
    static std::optional<URL> URLWithString(std::string_view text);
    // The file URL of a path, whose bytes survive whatever they are. A relative path starts at the
    // current folder. The file system is not asked whether the path exists.
    static URL fileURLWithPath(std::string_view path);

    // The text given.
    const std::string& absoluteString() const noexcept { return text_; }
    // Without its ":", as written; "" in a relative reference.
    std::string_view scheme() const noexcept { return part(Span{0, parts_.schemeLength}); }
    // As written, with the brackets of an IPv6 address; "" where there is none.
    std::string_view host() const noexcept { return part(parts_.host); }
    // The path's bytes with escapes replaced; a "%00" becomes a zero byte.
    std::string path() const;
    // Whether the scheme is "file", in any case.
    bool isFileURL() const noexcept;

    bool operator==(const URL& other) const noexcept { return text_ == other.text_; }

private:
    struct Span {
        std::size_t location = 0;
        std::size_t length = 0;
    };
    struct Parts {
        std::size_t schemeLength = 0;
        Span host;
        Span path;
    };

    URL(std::string_view text, const Parts& parts) : text_(text), parts_(parts) {}

    static std::optional<Parts> partsOf(std::string_view text);
    std::string_view part(Span span) const noexcept {
        return std::string_view(text_).substr(span.location, span.length);
    }

    std::string text_;
    Parts parts_;
};

}  // namespace quillet::platform
