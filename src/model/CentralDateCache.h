#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "model/RecordBlock.h"
#include "model/RecordText.h"

namespace quillet {

// The date texts of one read. Formatting a date costs more than reading a message, and messages of
// one day share their text (of today, one instant), so each is formatted and kept once. Gives what
// ExtensionDate::centralDate gives for the same `now`. One thread.
class CentralDateCache {
public:
    // Looks again which time zone the system has. The texts are stored in `block`, which outlives
    // the cache.
    CentralDateCache(double now, RecordBlock& block);

    // Valid until the next call; what it shares in the block lives as long as the block.
    const RecordText& text(double date);

private:
    // The text of the instants from `start` to `end`, exclusive.
    struct Entry {
        double start = 0;
        double end = 0;
        RecordText text;

        bool holds(double date) const { return start <= date && date < end; }
    };

    // The dates of a store come in no order, and a map is slow to search; the entries found last
    // stand in a table with one place for every couple of hours.
    static constexpr std::size_t kPlaces = 1024;
    static std::size_t placeOf(double date);

    const Entry& find(double date);
    const Entry& make(double date);

    RecordBlock& block_;
    double now_;
    std::optional<std::int64_t> today_;  // as ExtensionDate::IntDate; none before the first text
    std::map<double, Entry> entries_;    // by start
    std::array<const Entry*, kPlaces> found_{};
};

}  // namespace quillet
