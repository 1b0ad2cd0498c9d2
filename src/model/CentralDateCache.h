#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "model/RecordBlock.h"
#include "model/RecordText.h"

namespace quillet {

// The date texts of one read. Formatting a date costs more than reading a message, so each text is
// formatted once: messages of one day share it, and so do today's messages of one instant. Returns
// what ExtensionDate::centralDate returns for the same `now`. One thread.
class CentralDateCache {
public:
    // Reads the system's time zone again. `block` stores the texts and outlives the cache.
    CentralDateCache(double now, RecordBlock& block);

    // Valid until the next call. The text itself lives as long as the block.
    const RecordText& text(double date);

private:
    // The text of the instants from `start` to `end`, exclusive.
    struct Entry {
        double start = 0;
        double end = 0;
        RecordText text;

        bool holds(double date) const { return start <= date && date < end; }
    };

    // The dates of a store come in no order, and searching the map for each makes a whole read 7 %
    // slower. This table holds the entries found last, with one place for about two hours.
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
