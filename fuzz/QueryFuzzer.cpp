// Takes a text through all operations on queries and URLs. Its first byte is the options word.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Require.h"
#include "platform/base/Exception.h"
#include "platform/base/Utf8.h"
#include "platform/url/URL.h"
#include "util/RequestUtils.h"

namespace quillet::fuzz {

namespace {

using platform::URL;

void codeComponent(std::string_view text) {
    const std::string encoded = RequestUtils::URLEncodedString(text);
    const std::optional<std::string> decoded = RequestUtils::URLDecodedString(encoded, true);
    require(decoded.has_value() == !platform::firstInvalidUtf8(text), "all of UTF-8 is decoded");
    require(!decoded || *decoded == text, "decoding undoes encoding");
    require(URL::fileURLWithPath("/" + std::string(text)).path() == "/" + std::string(text),
            "a path survives its URL");
}

void findQuery(std::string_view text) {
    const RequestUtils::Range range = RequestUtils::rangeOfURLQuery(text);
    const bool found = range.location != RequestUtils::Range::kNotFound;
    require(!found || range.location + range.length <= text.size(), "a query is part of its text");
    require(found == RequestUtils::URLQuery(text).has_value(), "a range has a query");
    if (const auto url = URL::URLWithString(text)) {
        require(url->absoluteString() == text, "a URL keeps its text");
        require(
            URL::URLWithString(RequestUtils::stringByAppendingURLQuery(text, "a=1")).has_value(),
            "a URL with a further parameter is a URL");
    }
}

// Operations that may raise.
void parseAndMerge(std::string_view text, unsigned options) {
    constexpr unsigned kLossless = RequestUtils::EveryValueAsArray | RequestUtils::BracketKeys;
    try {
        const ParameterMap lists = RequestUtils::URLQueryParametersWithOptions(text, kLossless);
        require(RequestUtils::URLQueryParametersWithOptions(
                    RequestUtils::URLQueryWithParameters(lists, kLossless), kLossless) == lists,
                "parsing undoes building");
        const ParameterMap map = RequestUtils::URLQueryParametersWithOptions(text, options);
        require(map.entries().size() == lists.entries().size(), "all policies find the same keys");
        const std::string query = RequestUtils::URLQueryWithParameters(map, options);
        require(URL::URLWithString("x?" + query).has_value(), "a built query fits into a URL");
        RequestUtils::stringByMergingURLQuery(text, text, options);
        RequestUtils::stringByMergingURLQuery("page?a=1&b=2", text, options);
    } catch (const platform::Exception&) {
        return;
    }
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0) {
        const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
        quillet::fuzz::codeComponent(text);
        quillet::fuzz::findQuery(text);
        quillet::fuzz::parseAndMerge(text, data[0]);
    }
    return 0;
}
