#pragma once

#include <string>
#include <string_view>
#include <vector>

// Lines of the journal: fields between tabs. Fields are bytes of any kind; control characters and
// "%" are written as "%" and two hexadecimal digits.
namespace quillet::mailhost {

// The line with its line feed.
std::string journalLine(const std::vector<std::string>& fields);

// The fields of a line without its line feed; none if the line was not written by journalLine().
std::vector<std::string> parseJournalLine(std::string_view line);

}  // namespace quillet::mailhost
