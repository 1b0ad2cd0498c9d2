#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Error.h"

namespace quillet::mailhost {

// A message as the container shows it.
struct MessageRow {
    std::string file;        // "cur/NAME" or "new/NAME", below the mail folder
    std::string identifier;  // see identifierOf()
    std::string subject;     // empty: none
    std::string from;
    std::int64_t date = 0;  // seconds since 1970
    bool isUnread = false;

    bool operator==(const MessageRow&) const = default;
};

// Which messages of a folder count. None of those with the flags T or D ever does.
struct RowFilter {
    bool onlyFlagged = false;
    bool onlyUnread = false;
};

inline constexpr std::size_t kNewestRows = 50;

// Reads one mail folder: what has "cur" and "new". Remembers what it has read of each message by
// its base name, so that reading again costs a listing. One thread at a time.
//
// A listing that runs beside renames misses some files and doubles others. So a folder is listed
// again while it changes, three times at most (once if it was changing at the last refresh, too),
// and a message that was there counts as gone only after two settled listings without it.
class FolderReader {
public:
    explicit FolderReader(std::string path);
    ~FolderReader();
    FolderReader(FolderReader&& other) noexcept;

    // Lists the folder again unless neither "cur" nor "new" has changed since. An error if one of
    // them cannot be listed, or if "cur" is missing: what was known stays.
    std::optional<platform::Error> refresh();

    // Whether refresh() should come again soon, though nothing may change: the folder changed
    // while it was listed or just before, or a message is missing for the first time.
    bool isUnsettled() const;

    // The newest messages of the last refresh(), newest first, at most kNewestRows. Reads the
    // headers of candidates that are not known yet. `now`: seconds since 1970.
    std::vector<MessageRow> newest(const RowFilter& filter, std::int64_t now);

    // Reads dates that newest() has not needed, for at most about `budget`, so that a new message
    // with an old name or time is found in the end. False when all are read.
    bool readAhead(std::chrono::milliseconds budget);

    // The file of a message, as in MessageRow, by its identifier; none if it is not there. Unless
    // the folder is as it was at the last listing, lists it again, and answers none only after two
    // settled listings without the message, or if the folder does not settle in ten listings.
    std::optional<std::string> fileOf(std::string_view identifier) const;

    // Leaves out a message that was moved away, without waiting for two listings.
    void forget(std::string_view identifier);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::mailhost
