#include "model/ExtensionDate.h"

#include <chrono>
#include <memory>
#include <utility>

#include "platform/plist/Number.h"

namespace quillet {

using platform::DateFormatter;
using platform::DateStyle;

namespace {

std::string textOf(double date, const ExtensionDate::Formatter& formatter) {
    return formatter ? formatter->stringFromDate(date) : std::string();
}

}  // namespace

ExtensionDate& ExtensionDate::shared() {
    // Never destroyed: a background read may still run while the program ends.
    static ExtensionDate& instance = []() -> ExtensionDate& {
        auto* const made = new ExtensionDate();
        made->Initialize();
        return *made;
    }();
    return instance;
}

void ExtensionDate::Initialize() {
    const auto shared = [](DateFormatter formatter) {
        return std::make_shared<const DateFormatter>(std::move(formatter));
    };
    setDateExchange(shared(DateFormatter::exchangePattern("yyyy-MM-dd'T'HH:mm:ss'Z'")));
    setDataDay(shared(DateFormatter::localPattern("yyyyMMdd")));
    setDateCentrale(shared(DateFormatter(DateStyle::None, DateStyle::Short)));
    setDateCentrale2(shared(DateFormatter(DateStyle::Short, DateStyle::None)));
}

double ExtensionDate::now() {
    using Seconds = std::chrono::duration<double>;
    return Seconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::int64_t ExtensionDate::IntDate(std::optional<double> date) const {
    return date ? platform::integerValueOfText(textOf(*date, dataDay())) : 0;
}

std::string ExtensionDate::centralDate(std::optional<double> date) const {
    return centralDate(date, now());
}

std::string ExtensionDate::centralDate(std::optional<double> date, double now) const {
    return date ? centralDate(*date, IntDate(date), IntDate(now)) : std::string();
}

std::string ExtensionDate::centralDate(double date, std::int64_t day, std::int64_t today) const {
    return textOf(date, day == today ? dateCentrale() : dateCentrale2());
}

std::optional<double> ExtensionDate::exchangeDate(const std::optional<std::string>& text) const {
    const std::lock_guard lock(exchangeLock_);
    const Formatter formatter = dateExchange();
    return text && formatter ? formatter->dateFromString(*text) : std::nullopt;
}

}  // namespace quillet
