#include "mailhost/maildir/Delivery.h"

#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

#include "mailhost/maildir/MessageFiles.h"
#include "mailhost/maildir/NewName.h"

#include "platform/base/Log.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

namespace {

using platform::uninterrupted;

// Returns 0 or the errno value.
int writeNewFile(const std::string& path, std::string_view bytes) {
    const platform::FileDescriptor file(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) {
        return errno;
    }
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
        if (count < 0) {
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return uninterrupted([&] { return ::fsync(file.get()); }) == 0 ? 0 : errno;
}

}  // namespace

platform::Result<std::string> deliver(const std::string& folder,
                                      std::string_view message,
                                      std::string_view flags) {
    const std::string name = newNameFor(std::string(":2,").append(flags));
    const std::string temporary = folder + "/tmp/" + name;
    const std::string path = folder + "/cur/" + name;
    if (auto error = platform::FileManager::createFolder(folder + "/tmp")) {
        return *error;
    }
    int code = writeNewFile(temporary, message);
    if (code == 0) {
        code = moveWithoutReplacing(temporary, path);
    }
    if (code != 0) {
        ::unlink(temporary.c_str());
        return platform::posixError(code, folder);
    }
    if (const auto error = syncFolder(folder + "/cur")) {
        platform::Log::write("MailHost message is not certain to be on the disk yet: %@",
                             {error->text});
    }
    return path;
}

}  // namespace quillet::mailhost
