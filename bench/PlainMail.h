#pragma once

#include <cstddef>
#include <string>
#include <vector>

// The least that a program can do for the same work on a mail folder, by system calls alone. All
// functions return milliseconds, and throw std::system_error if the system refuses.
namespace quillet::bench {

// Reads the names of all files in "cur" and "new".
double plainListing(const std::string& folder);
// The same, and asks for the facts of each file.
double plainStat(const std::string& folder);
// Opens and reads the first 4 KB of up to `count` files.
double plainReading(const std::string& folder, std::size_t count);

// A move as a program does it that loses nothing: a line in a journal, on the disk, then the
// rename, then both folders on the disk.
struct PlainMove {
    double untilRenamed = 0;
    double whole = 0;
};
// Moves a file of `source`/cur to `target`/cur, with the journal in `target`.
PlainMove plainMove(const std::string& source, const std::string& target);

}  // namespace quillet::bench
