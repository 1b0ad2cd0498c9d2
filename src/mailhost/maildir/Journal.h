#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/Result.h"

namespace quillet::mailhost {

// What is under way, kept in a file of the host's state folder, so that a start after a crash can
// finish or forget it. Each line is on the disk before the call returns. One thread at a time; one
// program at a time has the file (the host holds a lock on its state folder).
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

    // Reads the file, which may be missing. Lines that cannot be read (the last one may be cut off)
    // are left out.
    static platform::Result<Journal> open(const std::string& path);
    Journal(Journal&&) noexcept;
    ~Journal();

    const std::vector<Move>& openMoves() const;
    // Accounts whose command after changes has still to run.
    const std::vector<std::string>& pendingAccounts() const;

    std::optional<platform::Error> begin(const Move& move);
    // The move is done, or nothing of it happened.
    std::optional<platform::Error> end(const Move& move);
    std::optional<platform::Error> setPending(const std::string& account, bool isPending);

private:
    struct State;
    explicit Journal(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}  // namespace quillet::mailhost
