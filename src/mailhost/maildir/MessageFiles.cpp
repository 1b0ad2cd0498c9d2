#include "mailhost/maildir/MessageFiles.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "mailhost/maildir/FaultPoint.h"
#include "mailhost/maildir/MaildirName.h"

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "platform/files/Uninterrupted.h"

namespace quillet::mailhost {

using platform::Error;
using platform::FileDescriptor;
using platform::posixError;
using platform::Result;
namespace FileManager = platform::FileManager;

std::optional<MessagePath> parseMessagePath(const std::string& path) {
    const std::size_t nameAt = path.rfind('/');
    if (!path.starts_with('/') || nameAt == 0 || path.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    const std::size_t partAt = path.rfind('/', nameAt - 1);
    MessagePath parsed{path.substr(0, partAt),
                       path.substr(partAt + 1, nameAt - partAt - 1),
                       path.substr(nameAt + 1)};
    const bool isPart = parsed.part == "cur" || parsed.part == "new" || parsed.part == "tmp";
    const bool isName = !parsed.name.empty() && !parsed.name.starts_with('.');
    return isPart && isName ? std::optional(parsed) : std::nullopt;
}

bool isSameFolder(const std::string& one, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool isRegularFile(const std::string& path) {
    struct stat found {};
    return ::lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode);
}

std::string stableBaseOfFile(std::string_view fileName) {
    return stableBase(parseMaildirName(fileName).base);
}

Result<std::optional<std::string>> findMessage(const std::string& folder, std::string_view base) {
    const std::string_view start = base.substr(0, base.find(','));
    for (const char* part : {"/cur", "/new"}) {
        const std::string path = std::string(folder).append(part);
        const auto names = FileManager::contentsOfFolder(path);
        if (!names) {
            if (std::string_view(part) == "/new" && names.error().code == ENOENT) {
                continue;
            }
            return names.error();
        }
        for (const std::string& name : names.value()) {
            if (name.starts_with(start) && stableBaseOfFile(name) == base) {
                return std::optional(platform::Path::appendingPathComponent(path, name));
            }
        }
    }
    return std::optional<std::string>();
}

std::string currentPath(const std::string& path) {
    const auto message = parseMessagePath(path);
    if (!message) {
        return {};
    }
    const auto found = findMessage(message->folder, stableBaseOfFile(message->name));
    return found ? found.value().value_or("") : std::string();
}

void removeMessage(const std::string& path) {
    if (::unlink(path.c_str()) != 0 && errno == ENOENT) {
        ::unlink(currentPath(path).c_str());
    }
}

int moveWithoutReplacing(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    // The file system only knows the rename that replaces. A link never does.
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) != 0) {
        return errno;
    }
    faultPoint("link");
    if (::unlink(from.c_str()) != 0) {
        const int code = errno;  // for instance because it has been renamed since
        removeMessage(to);
        return code;
    }
    return 0;
}

std::optional<Error> syncFolder(const std::string& path) {
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto sync = [&] { return ::fsync(folder.get()); };
    if (!folder || (platform::uninterrupted(sync) != 0 && errno != EINVAL && errno != ENOTSUP)) {
        return posixError(errno, path);
    }
    return std::nullopt;
}

std::string withFlagsOf(const std::string& path, std::string_view flagged) {
    const std::size_t nameAt = path.rfind('/') + 1;
    const MaildirName name = parseMaildirName(std::string_view(path).substr(nameAt));
    const MaildirName wanted = parseMaildirName(flagged);
    if (name.flags == wanted.flags) {
        return path;
    }
    std::string renamed = path.substr(0, nameAt).append(name.base).append(1, name.separator);
    renamed.append("2,").append(wanted.flags);
    return moveWithoutReplacing(path, renamed) == 0 ? renamed : path;
}

}  // namespace quillet::mailhost
