#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/base/Atomic.h"
#include "platform/dates/DateFormatter.h"

namespace quillet {

// Holds the date formatters of the process. Instants are seconds since 1970-01-01 00:00:00 UTC. The
// first use fixes the locale and the calendar; local time follows the system's time zone (see
// LocalTime.h). Any thread.
class ExtensionDate {
public:
    // An absent formatter writes empty texts and parses nothing.
    using Formatter = std::shared_ptr<const platform::DateFormatter>;

    static ExtensionDate& shared();

    // Makes the four formatters. Called by shared, once.
    void Initialize();

    // Exchange timestamps.
    Formatter dateExchange() const { return dateExchange_.get(); }
    void setDateExchange(Formatter formatter) { dateExchange_.set(std::move(formatter)); }
    // The number of a day.
    Formatter dataDay() const { return dataDay_.get(); }
    void setDataDay(Formatter formatter) { dataDay_.set(std::move(formatter)); }
    // The time alone, in the user's short form.
    Formatter dateCentrale() const { return dateCentrale_.get(); }
    void setDateCentrale(Formatter formatter) { dateCentrale_.set(std::move(formatter)); }
    // The date alone, in the user's short form.
    Formatter dateCentrale2() const { return dateCentrale2_.get(); }
    void setDateCentrale2(Formatter formatter) { dateCentrale2_.set(std::move(formatter)); }

    // The local day of an instant as the number yyyyMMdd of the user's calendar; 0 for none.
    std::int64_t IntDate(std::optional<double> date) const;

    // The text that a row shows: the time of an instant of today, else the date; "" for none.
    std::string centralDate(std::optional<double> date) const;
    std::string centralDate(std::optional<double> date, double now) const;
    // Likewise, for an instant whose IntDate is `day` when the IntDate of now is `today`.
    std::string centralDate(double date, std::int64_t day, std::int64_t today) const;

    // The instant of an exchange timestamp such as 2026-11-14T23:44:49Z, or none when the text has
    // another form.
    std::optional<double> exchangeDate(const std::optional<std::string>& text) const;

    // Seconds since 1970 of this moment.
    static double now();

private:
    ExtensionDate() = default;

    platform::Atomic<Formatter> dateExchange_;
    platform::Atomic<Formatter> dataDay_;
    platform::Atomic<Formatter> dateCentrale_;
    platform::Atomic<Formatter> dateCentrale2_;
    mutable std::mutex exchangeLock_;  // one exchange timestamp is parsed at a time
};

}  // namespace quillet
