#pragma once

#include <functional>
#include <optional>
#include <string>

#include "mailhost/maildir/Journal.h"

#include "platform/base/Error.h"
#include "platform/base/Result.h"

// Moves messages between mail folders such that none is ever lost, whatever syncs the folders
// meanwhile and whenever the program ends.
namespace quillet::mailhost {

// Why nothing from `sourceFolder` may be moved to `targetFolder`; none if it may. A target that is
// not synchronised although the source is would take the message off the server. The text names
// the folder and says what is wrong. `file` is the message, as in MessageRow.
std::optional<platform::Error> whyNotMovable(const std::string& sourceFolder,
                                             const std::string& file,
                                             const std::string& targetFolder);

class Mover {
public:
    // `shallEnd` is asked while a message is copied to another file system: the copy is given up,
    // and the message stays where it is. The journal has to outlive the mover.
    Mover(Journal& journal, std::function<bool()> shallEnd);

    // Moves the message `file` ("cur/NAME" or "new/NAME") of `sourceFolder` into "cur" of
    // `targetFolder` under a new name, with the flags that it has then; the modification time and
    // the bytes stay. Returns the path of the moved file. An error says why nothing was moved. A
    // message whose file was renamed meanwhile is looked for up to five times, 50 ms apart
    // (ENOENT: it is gone). Folders are synced to disk before the call returns.
    platform::Result<std::string> move(const std::string& identifier,
                                       const std::string& sourceFolder,
                                       const std::string& file,
                                       const std::string& targetFolder);

    // Closes the moves that the journal has open, by what is on the disk. Call it at the start,
    // before any move. Logs what it finds.
    void recover();

private:
    // One attempt with the file at `path`. EEXIST: the new name is taken.
    platform::Result<std::string> moveFile(const std::string& identifier,
                                           const std::string& path,
                                           const std::string& targetFolder);
    platform::Result<std::string> moveAcross(const Journal::Move& move);
    void end(const Journal::Move& move);

    Journal& journal_;
    std::function<bool()> shallEnd_;
};

}  // namespace quillet::mailhost
