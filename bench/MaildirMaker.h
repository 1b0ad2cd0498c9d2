#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace quillet::bench {

// A message of a mail folder as the container shows it.
struct ExpectedRow {
    std::string identifier;
    std::string subject;
    std::int64_t date = 0;  // seconds since 1970

    bool operator==(const ExpectedRow&) const = default;
};

// Makes a mail folder of messages as mbsync stores them: headers of about 2 KB with encoded words,
// names with ",U=…", mixed flags, and some that nobody has seen in "new". Each message is ten
// minutes younger than the one before. All functions throw std::system_error if the disk fails.
class MaildirMaker {
public:
    // Makes the folder. `messages`: how many fill() makes; the last one has the date of now.
    MaildirMaker(std::string folder, std::size_t messages);

    // Adds all messages of a first sync: its time is the time in the names and of the files.
    void fill();

    // Writes a message into "tmp". deliver() renames it to "new", or to "cur" if it has been seen.
    // It is the newest of the folder.
    void prepare();
    ExpectedRow deliver();

    // What is shown: the newest 50 messages that are not deleted, newest first.
    std::vector<ExpectedRow> newest() const;
    // Leaves out the newest one, which somebody has moved away.
    void dropNewest() { newest_.pop_front(); }

private:
    std::string nameOfNext() const;
    std::string flagsOfNext() const;
    bool isNextUnseen() const;

    std::string folder_;
    std::size_t firstSync_;
    std::size_t made_ = 0;
    std::int64_t start_;              // seconds since 1970
    std::deque<ExpectedRow> newest_;  // one more than is shown, since one may be dropped
};

// Makes "cur", "new" and "tmp" of a mail folder, and the file that says that it is synchronised.
void makeMailFolder(const std::string& folder);

}  // namespace quillet::bench
