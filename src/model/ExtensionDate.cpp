#include "model/ExtensionDate.h"

#include <chrono>

#include "platform/foundation/Number.h"

namespace quillet {

using platform::DateFormatter;
using platform::DateStyle;

ExtensionDate& ExtensionDate::shared() {
    // Never destroyed: a background read may still run while the program ends.
    static ExtensionDate& instance = *new ExtensionDate();
    return instance;
}

ExtensionDate::ExtensionDate()
    : dateExchange_(DateFormatter::exchangePattern("yyyy-MM-dd'T'HH:mm:ss'Z'")),
      dataDay_(DateFormatter::localPattern("yyyyMMdd")),
      dateCentrale_(DateStyle::None, DateStyle::Short),
      dateCentrale2_(DateStyle::Short, DateStyle::None) {}

double ExtensionDate::now() {
    using Seconds = std::chrono::duration<double>;
    return Seconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::int64_t ExtensionDate::IntDate(std::optional<double> date) const {
    return date ? platform::integerValueOfText(dataDay_.stringFromDate(*date)) : 0;
}

std::string ExtensionDate::centralDate(std::optional<double> date) const {
    return centralDate(date, now());
}

std::string ExtensionDate::centralDate(std::optional<double> date, double now) const {
    if (!date) {
        return {};
    }
    const bool today = IntDate(date) == IntDate(now);
    return (today ? dateCentrale_ : dateCentrale2_).stringFromDate(*date);
}

std::optional<double> ExtensionDate::exchangeDate(const std::optional<std::string>& text) const {
    return text ? dateExchange_.dateFromString(*text) : std::nullopt;
}

}  // namespace quillet
