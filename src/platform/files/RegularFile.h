#pragma once

#include <cstddef>
#include <string>

#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"

namespace quillet::platform {

// An open regular file, and the length that the system tells of it: 0 for some that have contents.
struct RegularFile {
    FileDescriptor file;
    std::size_t size = 0;  // bytes
};

// Opens a file for reading, symbolic links followed. What is no regular file is an error (EISDIR
// for a folder, else EINVAL) and never waited for.
Result<RegularFile> openRegularFile(const std::string& path);

}  // namespace quillet::platform
