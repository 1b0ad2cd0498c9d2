#pragma once

#include <map>
#include <string>
#include <string_view>

#include "platform/foundation/DateFormatter.h"

namespace quillet {

// The date texts of one read. Formatting a date costs more than reading a message, and messages of
// one day share their text (of today, one instant), so each is formatted once. Gives what
// ExtensionDate::centralDate gives for the same `now`. One thread.
class CentralDateCache {
public:
    explicit CentralDateCache(double now);

    // Valid until the next call.
    std::string_view text(double date);

private:
    struct Entry {
        double end = 0;  // the text holds for instants from the entry's key up to here, exclusive
        std::string text;
    };
    using Entries = std::map<double, Entry>;

    Entries::const_iterator make(double date);

    double now_;
    platform::LocalDays days_;
    platform::LocalDays::Day today_;
    Entries entries_;
    Entries::const_iterator last_;
};

}  // namespace quillet
