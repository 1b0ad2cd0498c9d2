#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <vector>

#include "platform/base/Result.h"

// The names of the message files of a mail folder, as the system lists them. Any thread.
namespace quillet::mailhost {

// Which folder a path named and when its contents changed.
struct FolderStamp {
    dev_t device = 0;
    ino_t number = 0;
    std::int64_t time = 0;  // nanoseconds since 1970

    bool operator==(const FolderStamp&) const = default;
};
// Of "new" and "cur". A missing "new" has zeros.
using FolderStamps = std::array<FolderStamp, 2>;

// Files that lie in "new" and "cur": regular files whose name does not begin with ".".
struct FolderListing {
    struct File {
        std::uint32_t at = 0;      // of the name in `names`
        std::uint32_t length = 0;  // of the name
        bool isInNew = false;
    };
    std::string names;
    std::vector<File> files;  // those of "new" first, in the system's order
    FolderStamps stamps;
    // Whether nothing can have changed while the folder was listed.
    bool isSettled = false;

    std::string_view nameOf(const File& file) const {
        return std::string_view(names).substr(file.at, file.length);
    }
};

// "cur/NAME" or "new/NAME".
std::string fileInFolder(bool isInNew, std::string_view name);

platform::Result<FolderStamps> stampsOf(const std::string& folder);

inline constexpr int kMostListings = 3;

// Lists a mail folder again while it changes, `mostListings` times at most. An error if "cur" is
// missing, or if either cannot be listed.
platform::Result<FolderListing> listMailFolder(const std::string& folder,
                                               int mostListings = kMostListings);

}  // namespace quillet::mailhost
