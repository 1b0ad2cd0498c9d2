#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/Result.h"

namespace quillet::mailhost {

// What is under way, kept in a file of the host's state folder, so that a start after a crash can
// finish or forget it. What begins is on the disk before the call returns; what ends need not be,
// since looking at it again does no harm. One thread at a time; one program at a time has the file
// (the host holds a lock on its state folder).
class Journal {
public:
    // A move that began: both files by their whole paths. `temporary` is the copy in the target's
    // "tmp" while a message moves to another file system; empty otherwise.
    struct Move {
        std::string identifier;
        std::string source;
        std::string target;
        std::string temporary;

        bool operator==(const Move&) const = default;
    };

    // Reads the file, or creates it for the user alone. Lines that cannot be read (the last one may
    // be cut off) are left out. An error if it cannot be opened, is not a regular file (symbolic
    // links are not followed) or is longer than 16 MiB.
    static platform::Result<Journal> open(const std::string& path);
    Journal(Journal&& other) noexcept;
    ~Journal();

    const std::vector<Move>& openMoves() const;
    // Accounts whose command after changes has still to run.
    const std::vector<std::string>& pendingAccounts() const;

    // After an error the move must not happen.
    std::optional<platform::Error> begin(const Move& move);
    // The move is done, or nothing of it happened. It counts as closed even after an error.
    std::optional<platform::Error> end(const Move& move);
    std::optional<platform::Error> setPending(const std::string& account, bool isPending);

private:
    struct State;
    explicit Journal(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace quillet::mailhost
