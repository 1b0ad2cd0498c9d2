#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/DateFormatter.h"

namespace quillet {

// The one holder of the date formatters. Instants are seconds since 1970-01-01 00:00:00 UTC. Made
// on first use with the locale, calendar and time zone of that moment, which it keeps. Any thread.
class ExtensionDate {
public:
    static ExtensionDate& shared();

    // The local day of an instant as the number yyyyMMdd of the user's calendar; 0 for none.
    std::int64_t IntDate(std::optional<double> date) const;

    // What a row shows: the time of an instant of today, the date of any other; "" for none.
    std::string centralDate(std::optional<double> date) const;
    std::string centralDate(std::optional<double> date, double now) const;

    // The instant of an exchange timestamp such as 2026-11-14T23:44:49Z; none when it does not
    // match.
    std::optional<double> exchangeDate(const std::optional<std::string>& text) const;

    // Seconds since 1970 of this moment.
    static double now();

private:
    ExtensionDate();

    platform::DateFormatter dateExchange_;
    platform::DateFormatter dataDay_;
    platform::DateFormatter dateCentrale_;
    platform::DateFormatter dateCentrale2_;
};

}  // namespace quillet
