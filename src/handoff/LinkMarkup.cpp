#include "handoff/LinkMarkup.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace quillet {

namespace {

// Bytes that are searched for links before the rest is left as it is.
constexpr std::size_t kMostReading = std::size_t{256} << 20U;

constexpr char kWordEnd = '\n';

bool endsWord(char character) {
    return character == ' ' || character == '<' || character == '>';
}

// Calls `visit` with every word of the body that can hold a link, and with what stands before it.
// A link has a ":" and none of the characters that end a word, and an anchor begins and ends with
// such: so a link is never found across the end of a word, however often it was replaced.
template <typename Visit>
std::string_view forEachWord(std::string_view body, const Visit& visit) {
    std::size_t done = 0;
    for (std::size_t colon = body.find(':'); colon != std::string_view::npos;
         colon = body.find(':', done)) {
        std::size_t start = colon;
        while (start > done && !endsWord(body[start - 1])) {
            --start;
        }
        const auto rest = body.substr(colon);
        const std::size_t end =
            colon + static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), endsWord) -
                                             rest.begin());
        visit(body.substr(done, start - done), body.substr(start, end - start));
        done = end;
    }
    return body.substr(done);
}

std::size_t placeOf(std::string_view text, std::string_view what, std::size_t from) {
    // std::string_view::find takes quadratic time on hostile texts.
    const void* found = ::memmem(text.data() + from, text.size() - from, what.data(), what.size());
    return found == nullptr
               ? std::string_view::npos
               : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t number = 0;
    for (std::size_t at = placeOf(text, what, 0); at != std::string_view::npos;
         at = placeOf(text, what, at + what.size())) {
        ++number;
    }
    return number;
}

std::string anchorOf(std::string_view link) {
    std::string anchor;
    anchor.append("<a href='").append(link).append("'>").append(link).append("</a>");
    return anchor;
}

std::string replaced(std::string_view text, std::string_view what, std::string_view replacement) {
    std::string result;
    std::size_t done = 0;
    for (std::size_t at = placeOf(text, what, 0); at != std::string_view::npos;
         at = placeOf(text, what, done)) {
        result.append(text.substr(done, at - done)).append(replacement);
        done = at + what.size();
    }
    return result.append(text.substr(done));
}

// Replaces all links in the words, which end in kWordEnd each.
void markUpWords(std::string& words,
                 const std::vector<std::string>& links,
                 std::size_t mostMarkup) {
    const std::size_t longest = words.size() + mostMarkup;
    std::unordered_set<std::string_view> left;
    std::size_t read = 0;
    for (const std::string& link : links) {
        if (left.contains(link)) {
            continue;
        }
        read += words.size();
        if (read > kMostReading) {
            break;
        }
        const std::string anchor = anchorOf(link);
        const std::size_t number = countOf(words, link);
        if (number == 0 || (anchor.size() - link.size()) > (longest - words.size()) / number) {
            left.insert(link);
        } else {
            words = replaced(words, link, anchor);
        }
    }
}

}  // namespace

std::string markUpLinks(std::string_view body,
                        const std::vector<std::string>& links,
                        std::size_t mostMarkup) {
    // The words alone are searched for each link: most of a mail is no link.
    std::string words;
    forEachWord(body, [&](std::string_view, std::string_view word) {
        words.append(word).push_back(kWordEnd);
    });
    markUpWords(words, links, mostMarkup);

    std::string result;
    std::size_t next = 0;
    const std::string_view rest = forEachWord(body, [&](std::string_view gap, std::string_view) {
        const std::size_t end = words.find(kWordEnd, next);
        result.append(gap).append(words, next, end - next);
        next = end + 1;
    });
    return result.append(rest);
}

}  // namespace quillet
