#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "util/ParameterMap.h"

// Queries of URLs, as operations on text: the receiver is the first argument. Text is UTF-8, but
// invalid bytes do no harm unless a function says so. Pure functions for any thread. Time is linear
// in the text, times the logarithm of the number of keys where a query is parsed.
namespace quillet::RequestUtils {

// The options word: one of the first four, with or without BracketKeys. Without a policy the
// builder writes one pair for each element, while the parser keeps only the last value of a
// repeated key; the two defaults differ on purpose. 5, 6 and 7 have no name: they treat repeated
// keys as DuplicatesAsArray does, except that merging takes the new text as DuplicatesKeepLast
// does. Higher bits are ignored.
enum URLQueryOptions : unsigned {
    DuplicatesKeepLast = 1,   // one value for each key: the last
    DuplicatesKeepFirst = 2,  // one value for each key: the first
    DuplicatesAsArray = 3,    // a repeated key has a list of values
    EveryValueAsArray = 4,    // every value is a list
    BracketKeys = 8,          // elements of lists are written as key[]=value
};

// A range of a text's bytes.
struct Range {
    static constexpr std::size_t kNotFound = std::string_view::npos;

    std::size_t location = kNotFound;
    std::size_t length = 0;

    bool operator==(const Range&) const = default;
};

// The receiver as one component of a query: ASCII letters, digits, "-", "_", "." and "~" stay;
// every other byte becomes "%" and two upper-case hexadecimal digits. A space never becomes "+".
std::string URLEncodedString(std::string_view receiver);

// The receiver with its escapes replaced by the bytes they stand for and, with `plusAsSpace`, each
// "+" by a space. None when an escape is incomplete or the result is not valid UTF-8.
std::optional<std::string> URLDecodedString(std::string_view receiver, bool plusAsSpace);

// The range of the query: from the first "?" (included) to the first "#" or the end. A "?" after a
// "#" belongs to the fragment. Without a "?", everything before the fragment if it contains a "=".
Range rangeOfURLQuery(std::string_view receiver);

// The text of that range without its "?", a view into `receiver`; none when there is no query.
std::optional<std::string_view> URLQuery(std::string_view receiver);

// The map as pairs "key=value" joined by "&", in the map's order. An empty list writes nothing.
std::string URLQueryWithParameters(const ParameterMap& parameters, unsigned options = 0);

// The parameters of the receiver's query; "+" is a space. A "[]" at the end of a key is removed,
// whatever the options; a pair without "=" is dropped. "a=b=c" is read as a = b. Raises
// platform::Exception when a key or a value does not decode (see URLDecodedString). With
// DuplicatesKeepFirst the later values of a key are not decoded.
ParameterMap URLQueryParametersWithOptions(std::string_view receiver, unsigned options);
// The same without options.
ParameterMap URLQueryParameters(std::string_view receiver);

// The receiver with `query` inserted before its fragment, joined by "?" or "&" as the receiver
// needs it. `query` may begin with "?"; its own fragment is left out. An empty query changes
// nothing.
std::string stringByAppendingURLQuery(std::string_view receiver, std::string_view query);

// The receiver with the query of `query` (a URL or a bare query) merged into its own. Both are read
// and the result is written with the options. If both have a query, the result lacks the "?" before
// it: "b=2" merged into "page?a=1" gives "pagea=1&b=2". This is kept on purpose. Raises
// platform::Exception when a pair does not decode, and with EveryValueAsArray for a key that the
// receiver lacks: its list would become an element of a list, which no query can express.
std::string stringByMergingURLQuery(std::string_view receiver,
                                    std::string_view query,
                                    unsigned options = 0);

}  // namespace quillet::RequestUtils
