#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

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

// The cells of a table's line, without the blanks and back-ticks around them.
inline std::vector<std::string> tableCells(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream rest(line.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(" `");
        const std::size_t last = cell.find_last_not_of(" `");
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
    }
    return cells;
}

// The items of a cell, each in back-ticks, with blanks between them.
inline std::vector<std::string> itemsOfCell(const std::string& cell) {
    std::vector<std::string> items;
    std::istringstream rest(cell);
    for (std::string item; std::getline(rest, item, '`');) {
        if (item != " ") {
            items.push_back(item);
        }
    }
    return items;
}

// The rows of all tables of a page in docs/ whose first column has this heading.
inline std::vector<std::vector<std::string>> documentTable(const std::string& page,
                                                           const std::string& heading) {
    std::istringstream document(contentsOf(QUILLET_DOCS "/" + page));
    std::vector<std::vector<std::string>> rows;
    bool isInside = false;
    for (std::string line; std::getline(document, line);) {
        if (isInside && line.starts_with("|") && !line.starts_with("|--")) {
            rows.push_back(tableCells(line));
        }
        isInside = line.starts_with("| " + heading + " |") || (isInside && line.starts_with("|"));
    }
    return rows;
}

}  // namespace quillet::test
