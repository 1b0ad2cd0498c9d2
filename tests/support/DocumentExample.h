#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace quillet::test {

inline std::string contentsOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// The first example in this language on a page in docs/, or an empty text.
inline std::string documentExample(const std::string& page, const std::string& language) {
    const std::string document = contentsOf(QUILLET_DOCS "/" + page);
    const std::string opening = "```" + language + "\n";
    const std::size_t found = document.find(opening);
    if (found == std::string::npos) {
        return {};
    }
    const std::size_t start = found + opening.size();
    return document.substr(start, document.find("```", start) - start);
}

}  // namespace quillet::test
