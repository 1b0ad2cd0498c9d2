#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/MessageFiles.h"
#include "mailhost/maildir/Mover.h"

#include "platform/base/StandardError.h"
#include "platform/files/FileManager.h"

namespace quillet::mailhost {

using platform::Error;
using platform::printableLine;
namespace FileManager = platform::FileManager;

namespace {

Error refusal(int code, const std::string& text) {
    return {"POSIX", code, printableLine(text)};
}

std::optional<Error> whyNotWritable(const std::string& folder) {
    if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0) {
        return std::nullopt;
    }
    switch (const int code = errno) {
        case ENOENT:
        case ENOTDIR:
            return refusal(ENOENT,
                           folder +
                               " is missing: create the mail folder, or name another one in "
                               "the settings of the account");
        case EROFS:
            return refusal(code, folder + " is on a read-only disk: mail cannot be moved there");
        case EACCES:
            return refusal(code,
                           folder +
                               " may not be changed: give yourself permission to write "
                               "there");
        default:
            return platform::posixError(code, printableLine(folder));
    }
}

// The programs that synchronise leave these in each folder that they know.
bool isSynchronised(const std::string& folder) {
    return FileManager::fileExists(folder + "/.uidvalidity") ||
           FileManager::fileExists(folder + "/.isyncuidmap.db");
}

bool hasContentField(std::string_view name) {
    return fieldOf(parseMaildirName(name).base, "FMD5").has_value();
}

bool hasNameWithContentField(const std::string& folder) {
    const auto names = FileManager::contentsOfFolder(folder);
    return names && std::any_of(names.value().begin(), names.value().end(), hasContentField);
}

std::optional<Error> whyNotSynchronised(const std::string& sourceFolder,
                                        const std::string& name,
                                        const std::string& targetFolder) {
    if (isSynchronised(sourceFolder) && !isSynchronised(targetFolder)) {
        return refusal(EINVAL,
                       targetFolder + " is not synchronised although " + sourceFolder +
                           " is: a message moved there would leave the server. Synchronise the "
                           "folder first");
    }
    if (hasContentField(name) && !hasNameWithContentField(targetFolder + "/cur") &&
        !hasNameWithContentField(targetFolder + "/new")) {
        return refusal(EINVAL,
                       targetFolder + " holds no message that was synchronised, although " +
                           sourceFolder +
                           " does: a message moved there might leave the server. Synchronise the "
                           "folder first");
    }
    return std::nullopt;
}

}  // namespace

std::optional<Error> whyNotMovable(const std::string& sourceFolder,
                                   const std::string& file,
                                   const std::string& targetFolder) {
    const auto message = parseMessagePath(sourceFolder + "/" + file);
    if (!message || message->folder != sourceFolder || message->part == "tmp" ||
        !parseMessagePath(targetFolder + "/cur/-")) {
        return refusal(EINVAL, sourceFolder + "/" + file + " is not the file of a message");
    }
    if (isSameFolder(sourceFolder, targetFolder)) {
        return refusal(EINVAL, "The message is in " + targetFolder + " already");
    }
    if (auto error = whyNotWritable(targetFolder + "/cur")) {
        return error;
    }
    if (auto error = whyNotWritable(message->partFolder())) {
        return error;
    }
    return whyNotSynchronised(sourceFolder, message->name, targetFolder);
}

}  // namespace quillet::mailhost
