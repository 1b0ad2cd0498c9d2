#include "handoff/LinkMarkup.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

namespace quillet {

namespace {

// The number of bytes to read in search of links before the rest stays as it is: far more than any
// real mail needs, and less than a hostile one could cost.
constexpr std::size_t kMostReading = std::size_t{256} << 20U;

bool endsWord(char character) {
    return character == ' ' || character == '<' || character == '>';
}

// Calls `visit` with every word of the body that can contain a link, and with the text before it.
// Returns the text after the last one. A link has a ":" and no character that ends a word, while an
// anchor begins and ends with such a character. So no link ever crosses the end of a word, however
// often links were replaced.
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

// The words of a body, and the words that contain each link, so that replacing a link reads only
// its own words.
class MarkedWords {
public:
    explicit MarkedWords(const std::vector<std::string>& links) {
        for (const std::string& link : links) {
            places_.try_emplace(link);
            schemes_.insert(std::string_view(link).substr(0, link.find(':')));
            longest_ = std::max(longest_, link.size());
        }
    }

    void add(std::string_view word) {
        for (std::size_t colon = word.find(':'); colon != std::string_view::npos;
             colon = word.find(':', colon + 1)) {
            for (const std::string_view scheme : schemes_) {
                if (word.substr(0, colon).ends_with(scheme)) {
                    noteLinks(word.substr(colon - scheme.size()));
                }
            }
        }
        words_.emplace_back(word);
    }

    const std::string& word(std::size_t index) const { return words_[index]; }

    // Replaces a link everywhere. If all anchors would then add more than `most` bytes, does
    // nothing, now or later.
    void markUp(const std::string& link, std::size_t most) {
        std::vector<std::size_t>& places = places_.at(link);
        std::size_t number = 0;
        for (const std::size_t place : places) {
            number += mayRead(words_[place].size()) ? countOf(words_[place], link) : 0;
        }
        const std::string anchor = anchorOf(link);
        const std::size_t adds = anchor.size() - link.size();
        if (left_ == 0 || number == 0 || adds > (most - added_) / number) {
            places.clear();
            return;
        }
        for (const std::size_t place : places) {
            words_[place] = replaced(words_[place], link, anchor);
        }
        added_ += number * adds;
    }

private:
    // Notes the links that a part of the next word begins with. The part shares some bytes with the
    // last link that sorts before it; every other link to be noted is a beginning of those bytes.
    void noteLinks(std::string_view part) {
        while (!part.empty() && mayRead(std::min(part.size(), longest_))) {
            const auto next = places_.upper_bound(part);
            if (next == places_.begin()) {
                return;
            }
            auto& [link, places] = *std::prev(next);
            const auto differs =
                std::mismatch(link.begin(), link.end(), part.begin(), part.end()).first;
            auto shared = static_cast<std::size_t>(differs - link.begin());
            if (shared == link.size()) {
                if (places.empty() || places.back() != words_.size()) {
                    places.push_back(words_.size());
                }
                --shared;
            }
            part = part.substr(0, shared);
        }
    }

    // Whether this many more bytes may be read.
    bool mayRead(std::size_t bytes) {
        left_ -= std::min(left_, bytes);
        return left_ > 0;
    }

    std::vector<std::string> words_;
    std::map<std::string_view, std::vector<std::size_t>> places_;  // of each link, in words_
    std::set<std::string_view> schemes_;
    std::size_t longest_ = 0;  // bytes of a link
    std::size_t left_ = kMostReading;
    std::size_t added_ = 0;
};

}  // namespace

std::string markUpLinks(std::string_view body,
                        const std::vector<std::string>& links,
                        std::size_t mostMarkup) {
    MarkedWords words(links);
    forEachWord(body, [&](std::string_view, std::string_view word) { words.add(word); });
    for (const std::string& link : links) {
        words.markUp(link, mostMarkup);
    }
    std::string result;
    std::size_t index = 0;
    const std::string_view rest = forEachWord(body, [&](std::string_view gap, std::string_view) {
        result.append(gap).append(words.word(index++));
    });
    return result.append(rest);
}

}  // namespace quillet
