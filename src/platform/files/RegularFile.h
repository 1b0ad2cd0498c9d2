#pragma once

#include <cstddef>
#include <string>

#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"

namespace quillet::platform {

// An open regular file and the size that the system reports, which is 0 for some files with
// contents.
struct RegularFile {
    FileDescriptor file;
    std::size_t size = 0;  // bytes
};

// Opens a file for reading and follows symbolic links. Anything but a regular file is an error
// (EISDIR for a folder, else EINVAL) and never waited for.
Result<RegularFile> openRegularFile(const std::string& path);

}  // namespace quillet::platform
