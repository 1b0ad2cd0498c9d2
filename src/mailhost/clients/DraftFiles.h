#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "platform/base/Result.h"

// The files of drafts. They lie in staging folders, which a later share may empty, so the host
// copies them into a folder of its own for each draft. Any thread.
namespace quillet::mailhost {

// What was taken of a draft's files.
struct TakenFiles {
    std::vector<std::string> files;    // paths of the copies
    std::vector<std::string> leftOut;  // of the others, as the draft names them
};

// A new folder for a draft below `drafts`, for the user alone.
platform::Result<std::string> newDraftFolder(const std::string& drafts);

// Copies the files at `paths` into `folder`: regular files within staging folders of `dataFolder`,
// symbolic links resolved, each under the reader's lock. No other file is opened, and nothing is
// locked for it. Waits at most `patience` for all locks together.
TakenFiles takeDraftFiles(const std::vector<std::string>& paths,
                          const std::string& dataFolder,
                          const std::string& folder,
                          std::chrono::milliseconds patience);

// Removes the folders below `drafts` that are more than a week old.
void removeOldDrafts(const std::string& drafts);

}  // namespace quillet::mailhost
