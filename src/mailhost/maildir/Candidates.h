#pragma once

#include <cstdint>
#include <vector>

#include "mailhost/maildir/FolderReader.h"
#include "mailhost/maildir/KnownMessages.h"

// Which messages of a folder may be its newest. Pure functions, any thread.
namespace quillet::mailhost {

// The date that a row shows, in seconds since 1970: that of the header if it can be true at `now`,
// else that of the file.
std::int64_t shownDate(const KnownMessage& message, std::int64_t now);

// The messages that pass `filter` and may be among the newest kNewestRows, each once, without
// order. After a first sync the times of names and files are those of the download, so the ones
// with the highest UIDs count too, and those whose date is known to be late.
std::vector<KnownMessage*> newestCandidates(std::vector<KnownMessage>& messages,
                                            const RowFilter& filter,
                                            std::int64_t now);

}  // namespace quillet::mailhost
