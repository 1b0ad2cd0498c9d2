#pragma once

#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Result.h"
#include "platform/files/FileDescriptor.h"

namespace quillet::platform {

// A new file that is written in the folder of its future place, so that nobody ever sees half of
// it. Its name begins with ".". The destructor removes it unless it was moved to its place.
class TemporaryFile {
public:
    // Creates an empty file in the folder of `path`, open for writing. Its mode is 0666 less the
    // process's file mode mask.
    static Result<TemporaryFile> beside(const std::string& path);

    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    ~TemporaryFile();

    int descriptor() const noexcept { return file_.get(); }

    // Closes the file and moves it to `path`, replacing what is there.
    std::optional<Error> replace(const std::string& path);
    // Closes the file and moves it to `path`. EEXIST if anything is there.
    std::optional<Error> moveTo(const std::string& path);

private:
    TemporaryFile(FileDescriptor file, std::string path);

    std::optional<Error> close();

    FileDescriptor file_;
    std::string path_;  // empty when the file is in its place
};

}  // namespace quillet::platform
