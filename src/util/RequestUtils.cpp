#include "util/RequestUtils.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/base/Exception.h"
#include "platform/base/Utf8.h"
#include "platform/url/PercentEncoding.h"

namespace quillet::RequestUtils {

namespace {

using platform::PercentKeep;
using platform::PlusSign;
using List = ParameterMap::List;

constexpr unsigned kPolicyBits = 7;

unsigned policyOf(unsigned options, unsigned byDefault) {
    const unsigned policy = options & kPolicyBits;
    return policy != 0 ? policy : byDefault;
}

// The elements of a list that the builder writes.
std::span<const std::string> written(const List& list, unsigned policy) {
    const std::span all(list);
    if (policy == DuplicatesKeepLast) {
        return all.last(std::min<std::size_t>(1, all.size()));
    }
    return policy == DuplicatesKeepFirst ? all.first(std::min<std::size_t>(1, all.size())) : all;
}

// What the builder writes after a key. A text gets brackets only if it counts as a list.
std::string_view bracketSuffix(unsigned options, unsigned policy, bool isList) {
    const bool many = policy != DuplicatesKeepLast && policy != DuplicatesKeepFirst;
    const bool counts = policy == EveryValueAsArray || (isList && many);
    return (options & BracketKeys) != 0 && counts ? "[]" : "";
}

// Removes everything up to and including the first `separator` and returns what came before it.
std::string_view takeUpTo(std::string_view& text, char separator) {
    const std::size_t length = std::min(text.find(separator), text.size());
    const std::string_view piece = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return piece;
}

std::string decodedOrRaise(std::string_view component) {
    std::optional<std::string> decoded = URLDecodedString(component, true);
    if (!decoded) {
        throw platform::Exception("a key or a value of the query does not decode");
    }
    return *std::move(decoded);
}

bool cutBrackets(std::string& key) {
    if (!key.ends_with("[]")) {
        return false;
    }
    key.resize(key.size() - 2);
    return true;
}

// Adds `added` to the list `value`. A text becomes the first element of a list.
void appendTo(ParameterMap::Value& value, std::string added) {
    if (auto* text = std::get_if<std::string>(&value)) {
        List list;
        list.push_back(std::move(*text));
        value = std::move(list);
    }
    std::get<List>(value).push_back(std::move(added));
}

// Adds a pair whose value is still encoded.
void addParsed(ParameterMap& map, std::string key, std::string_view encoded, unsigned policy) {
    const bool bracketed = cutBrackets(key);
    auto [value, isNew] = map.tryEmplace(std::move(key));
    if (!isNew && policy == DuplicatesKeepFirst) {
        return;  // a value that is not kept need not decode
    }
    std::string text = decodedOrRaise(encoded);
    if (isNew) {
        if (policy == EveryValueAsArray || (policy == DuplicatesAsArray && bracketed)) {
            value = List();
            appendTo(value, std::move(text));
        } else {
            value = std::move(text);
        }
    } else if (policy == DuplicatesKeepLast) {
        value = std::move(text);
    } else {
        appendTo(value, std::move(text));
    }
}

void merge(ParameterMap& map, ParameterMap::Entry incoming, unsigned policy) {
    auto [value, isNew] = map.tryEmplace(std::move(incoming.key));
    if (isNew) {
        // With this policy both maps hold only lists, and this one would go into another list.
        if (policy == EveryValueAsArray) {
            throw platform::Exception("a list in a list cannot be written as a query");
        }
        value = std::move(incoming.value);
    } else if (auto* list = std::get_if<List>(&incoming.value)) {
        for (std::string& element : *list) {
            appendTo(value, std::move(element));
        }
    } else if (std::holds_alternative<List>(value) || policy == DuplicatesAsArray) {
        appendTo(value, std::move(std::get<std::string>(incoming.value)));
    } else if (policy != DuplicatesKeepFirst) {
        value = std::move(incoming.value);
    }
}

// Whether the text before a fragment has a query, which may be empty, or is a bare query: then a
// "=" comes before any character that only other parts of a URL have.
bool hasQuery(std::string_view head) {
    const std::size_t first = head.find_first_of("=:/?");
    return head.find('?') != std::string_view::npos ||
           (first != std::string_view::npos && head[first] == '=');
}

// The receiver with `query` joined to it; `query` is not empty and has no leading "?".
std::string appending(std::string_view receiver, std::string_view query) {
    const std::size_t end = std::min(receiver.find('#'), receiver.size());
    const std::string_view head = receiver.substr(0, end);
    std::string joined(head);
    const bool isQueryEmpty = head.find('?') == head.size() - 1;
    if (!hasQuery(head)) {
        joined += '?';
    } else if (!isQueryEmpty && !head.ends_with('&')) {
        joined += '&';
    }
    return joined.append(query).append(receiver.substr(end));
}

}  // namespace

std::string URLEncodedString(std::string_view receiver) {
    std::string encoded;
    platform::appendPercentEncoded(receiver, PercentKeep::Unreserved, encoded);
    return encoded;
}

std::optional<std::string> URLDecodedString(std::string_view receiver, bool plusAsSpace) {
    std::string decoded;
    const PlusSign plus = plusAsSpace ? PlusSign::Space : PlusSign::Itself;
    if (!platform::appendPercentDecoded(receiver, plus, decoded) ||
        platform::firstInvalidUtf8(decoded)) {
        return std::nullopt;
    }
    return decoded;
}

Range rangeOfURLQuery(std::string_view receiver) {
    const std::string_view head = receiver.substr(0, receiver.find('#'));
    if (const std::size_t mark = head.find('?'); mark != std::string_view::npos) {
        return {mark, head.size() - mark};
    }
    return head.find('=') != std::string_view::npos ? Range{0, head.size()} : Range{};
}

std::optional<std::string_view> URLQuery(std::string_view receiver) {
    const Range range = rangeOfURLQuery(receiver);
    if (range.location == Range::kNotFound) {
        return std::nullopt;
    }
    std::string_view query = receiver.substr(range.location, range.length);
    if (query.starts_with('?')) {
        query.remove_prefix(1);
    }
    return query;
}

std::string URLQueryWithParameters(const ParameterMap& parameters, unsigned options) {
    const unsigned policy = policyOf(options, DuplicatesAsArray);
    std::string query;
    for (const auto& [key, value] : parameters.entries()) {
        const auto* text = std::get_if<std::string>(&value);
        const std::string_view suffix = bracketSuffix(options, policy, text == nullptr);
        const std::string encodedKey = URLEncodedString(key);
        for (const std::string& element :
             text != nullptr ? std::span(text, 1) : written(std::get<List>(value), policy)) {
            query.append(query.empty() ? "" : "&").append(encodedKey).append(suffix).append(1, '=');
            platform::appendPercentEncoded(element, PercentKeep::Unreserved, query);
        }
    }
    return query;
}

ParameterMap URLQueryParameters(std::string_view receiver) {
    return URLQueryParametersWithOptions(receiver, 0);
}

ParameterMap URLQueryParametersWithOptions(std::string_view receiver, unsigned options) {
    const unsigned policy = policyOf(options, DuplicatesKeepLast);
    ParameterMap map;
    std::string_view rest = URLQuery(receiver).value_or("");
    while (!rest.empty()) {
        const std::string_view pair = takeUpTo(rest, '&');
        const std::size_t equals = pair.find('=');
        if (equals != std::string_view::npos) {
            // Everything from a second "=" on is left out on purpose.
            const std::string_view value = pair.substr(equals + 1);
            addParsed(map,
                      decodedOrRaise(pair.substr(0, equals)),
                      value.substr(0, value.find('=')),
                      policy);
        }
    }
    return map;
}

std::string stringByAppendingURLQuery(std::string_view receiver, std::string_view query) {
    query = query.substr(0, query.find('#'));
    if (query.starts_with('?')) {
        query.remove_prefix(1);
    }
    return query.empty() ? std::string(receiver) : appending(receiver, query);
}

std::string stringByMergingURLQuery(std::string_view receiver,
                                    std::string_view query,
                                    unsigned options) {
    const std::string_view added = URLQuery(query).value_or("");
    if (added.empty()) {
        return std::string(receiver);
    }
    if (URLQuery(receiver).value_or("").empty()) {
        return appending(receiver, added);
    }
    ParameterMap merged = URLQueryParametersWithOptions(receiver, options);
    for (ParameterMap::Entry& entry : URLQueryParametersWithOptions(query, options).entries()) {
        merge(merged, std::move(entry), policyOf(options, DuplicatesKeepLast));
    }
    const Range range = rangeOfURLQuery(receiver);
    std::string result(receiver.substr(0, range.location));
    return result.append(URLQueryWithParameters(merged, options))
        .append(receiver.substr(range.location + range.length));
}

}  // namespace quillet::RequestUtils
