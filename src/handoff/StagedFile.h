#pragma once

#include <optional>
#include <string>

namespace quillet {

// A file in a staging folder, or where it would stand; symbolic links are resolved.
struct StagedFile {
    std::string folder;
    std::string path;
};

// None where the path leads to no place in a staging folder of the data folder: any program of the
// session may send a draft, and its path may name any file. Opens and locks nothing. Any thread.
std::optional<StagedFile> stagedFile(const std::string& dataFolder, const std::string& path);

}  // namespace quillet
