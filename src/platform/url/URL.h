#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quillet::platform {

// A URI reference (RFC 3986) that keeps the text it was made from. A value type, for any thread.
// The views that it returns live as long as the URL itself.
class URL {
public:
    // None when `text` is empty or not a valid reference. "[" and "]" are accepted in a query. Raw
    // non-ASCII characters and a "%" without two hexadecimal digits are never accepted.
    static std::optional<URL> URLWithString(std::string_view text);
    // The file URL of a path, which may contain any bytes. A relative path starts at the current
    // folder. The path need not exist.
    static URL fileURLWithPath(std::string_view path);

    // The text given.
    const std::string& absoluteString() const noexcept { return text_; }
    // Without its ":", as written; "" in a relative reference.
    std::string_view scheme() const noexcept { return part(Span{0, parts_.schemeLength}); }
    // As written, with the brackets of an IPv6 address; "" when the host is missing.
    std::string_view host() const noexcept { return part(parts_.host); }
    // The path's bytes with its escapes decoded; "%00" becomes a zero byte.
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
