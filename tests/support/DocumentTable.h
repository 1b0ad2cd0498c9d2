#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/DocumentExample.h"

namespace quillet::test {

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
        if (!line.starts_with("|")) {
            isInside = false;
        } else if (isInside && !line.starts_with("|--")) {
            rows.push_back(tableCells(line));
        } else if (line.starts_with("| " + heading + " |")) {
            isInside = true;
        }
    }
    return rows;
}

}  // namespace quillet::test
