#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "mailhost/maildir/Mover.h"

#include "platform/base/Result.h"

namespace quillet::mailhost {

// The moves that can still be undone, for ten minutes. Moves that follow each other within two
// seconds are one burst and are undone together. One thread.
class UndoList {
public:
    using Clock = std::chrono::steady_clock;
    // The number of a burst; never 0.
    using Burst = std::uint64_t;

    static constexpr std::chrono::seconds kPause{2};
    static constexpr std::chrono::minutes kOpen{10};  // after the last move of a burst

    struct Move {
        std::string account;
        std::string sourceFolder;
        std::string file;  // the whole path to which the message was moved
    };
    struct Undone {
        std::string account;
        // The message's path now, or why it stays where it is.
        platform::Result<std::string> file;
    };

    // The mover has to outlive the list.
    explicit UndoList(Mover& mover) : mover_(mover) {}

    // Returns the burst that the move belongs to.
    Burst add(Move move, Clock::time_point now);

    // Moves the messages of a burst back, each of them under a name that is new again and with the
    // flags that it has now. A message that another program renamed meanwhile is found. A burst can
    // be undone once: after that, and when it is too old or unknown, the result is empty.
    // `willMove` is called before each move.
    std::vector<Undone> undo(Burst burst,
                             Clock::time_point now,
                             const std::function<void(const std::string& account)>& willMove);

private:
    struct Moves {
        Burst burst = 0;
        Clock::time_point last;
        std::vector<Move> moves;
    };

    void dropOld(Clock::time_point now);

    Mover& mover_;
    std::deque<Moves> bursts_;  // the oldest first
    Burst lastBurst_ = 0;
};

}  // namespace quillet::mailhost
