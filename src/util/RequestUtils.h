#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "util/ParameterMap.h"

// Queries of URLs, as operations on text: the receiver is the first argument. Text is UTF-8, but
// nothing relies on it unless it says so. Pure functions that take linear time, for any thread.
namespace quillet::RequestUtils {

// The options word: one of the first four, and BracketKeys or not. Without a policy the builder
// writes one pair for each element, while the parser keeps only the last value of a repeated key;
// the two defaults differ on purpose. 5, 6 and 7 have no name; they treat repeated keys as
// DuplicatesAsArray, except that the merger takes the new text as DuplicatesKeepLast does. Bits
// above are ignored.
enum URLQueryOptions : unsigned {
    DuplicatesKeepLast = 1,   // one value for each key, the last
    DuplicatesKeepFirst = 2,  // one value for each key, the first
    DuplicatesAsArray = 3,    // a repeated key has a list of values
    EveryValueAsArray = 4,    // every value is a list
    BracketKeys = 8,          // elements of lists are written as key[]=value
};

// Bytes of a text.
struct Range {
    static constexpr std::size_t kNotFound = std::string_view::npos;

    std::size_t location = kNotFound;
    std::size_t length = 0;

    bool operator==(const Range&) const = default;
};

// The receiver as one component of a query: ASCII letters, digits, "-", "_", "." and "~" stay,
// every other byte becomes "%" and two upper-case hexadecimal digits. A space is never "+".
std::string URLEncodedString(std::string_view receiver);

// The receiver with the bytes that its escapes stand for, where asked with a space for each "+".
// Nothing where an escape is not complete or the result is not valid UTF-8.
std::optional<std::string> URLDecodedString(std::string_view receiver, bool plusAsSpace);

// Where the query is: from the first "?" (included) to the first "#" or the end. A "?" behind a
// "#" belongs to the fragment. Without a "?", all in front of the fragment where it holds a "=".
Range rangeOfURLQuery(std::string_view receiver);

// The text of that range without its "?"; nothing where there is no query. A part of `receiver`.
std::optional<std::string_view> URLQuery(std::string_view receiver);

// The map as pairs "key=value" that are joined by "&", in the map's order. An empty list writes
// nothing.
std::string URLQueryWithParameters(const ParameterMap& parameters, unsigned options = 0);

// The parameters of the receiver's query; "+" is a space. A "[]" behind a key is cut off, whatever
// the options; a piece without "=" is dropped. Of "a=b=c" only a = b is read. Raises
// platform::Exception when a key or a value does not decode (see URLDecodedString); with
// DuplicatesKeepFirst the later values of a key are not decoded.
ParameterMap URLQueryParametersWithOptions(std::string_view receiver, unsigned options);
// The same without options.
ParameterMap URLQueryParameters(std::string_view receiver);

// The receiver with a query, which may begin with "?", in front of its fragment, joined by "?" or
// "&" as the receiver needs it. The fragment of `query` is left out; an empty one changes nothing.
std::string stringByAppendingURLQuery(std::string_view receiver, std::string_view query);

// The receiver with the query of `query` (a URL or a bare query) merged into its own; both are
// read with the options and the result is written with them. Where both have a query, the result
// lacks the "?" in front of it: "b=2" merged into "page?a=1" gives "pagea=1&b=2". This is kept on
// purpose. Raises platform::Exception when a pair does not decode, and with EveryValueAsArray for
// a key that the receiver lacks, whose list would stand in a list, which no query can express.
std::string stringByMergingURLQuery(std::string_view receiver,
                                    std::string_view query,
                                    unsigned options = 0);

}  // namespace quillet::RequestUtils
