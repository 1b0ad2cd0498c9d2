#pragma once

#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"

namespace quillet::platform {

// A new file that is filled beside the place where it will stand, so that nobody ever sees half of
// it. Its name begins with "."; it is removed at the end unless it was put in its place.
class TemporaryFile {
public:
    // An empty file in the folder of `path`, open for writing. Its mode is 0666 less the process's
    // file mode mask.
    static Result<TemporaryFile> beside(const std::string& path);

    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile();

    int descriptor() const noexcept { return file_.get(); }

    // Closes the file and puts it at `path`, in place of what stands there.
    std::optional<Error> replace(const std::string& path);
    // Closes the file and puts it at `path`; an error (EEXIST) where anything stands there.
    std::optional<Error> moveTo(const std::string& path);

private:
    TemporaryFile(FileDescriptor file, std::string path);

    std::optional<Error> close();

    FileDescriptor file_;
    std::string path_;  // empty once the file is in its place
};

}  // namespace quillet::platform
