#include <cmath>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <thread>

#include "platform/dates/DateFormatter.h"
#include "platform/dates/LocalTime.h"
#include "tests/support/EnvironmentVariable.h"

namespace quillet::test {
namespace {

using platform::DateFormatter;
using platform::DateStyle;
using platform::localDayOf;

constexpr double kInstant = 1794699889;  // 2026-11-14 23:44:49 UTC

// The user's region during the scope.
struct Region {
    Region(const std::string& locale, const std::string& zone)
        : all("LC_ALL", locale), timeZone("TZ", zone) {
        platform::refreshTimeZone();
    }
    EnvironmentVariable all;
    EnvironmentVariable timeZone;
};

TEST(DateFormatter, ShortStylesAreThoseOfTheLocaleAndTheZone) {
    const char* const cases[][4] = {
        {"de_DE.UTF-8", "Europe/Berlin", "15.11.26", "00:44"},
        {"en_GB.UTF-8", "UTC", "14/11/2026", "23:44"},
        {"C.UTF-8", "UTC", "11/14/26", "11:44\u202FPM"},
        {"ks_IN.UTF-8@devanagari", "UTC", "14/11/26", "पी एम 11:44"},
        {"de_DE@calendar=buddhist", "UTC", "14.11.69 BE", "23:44"},
        {"fa_IR", "UTC", "۱۴۰۵/۸/۲۳", "۲۳:۴۴"},
        {"de_DE", "<+0545>-5:45", "15.11.26", "05:29"},
        {"", "UTC", "14.11.26", "23:44"},  // an empty variable leaves it to the next one
    };
    const EnvironmentVariable lcTime("LC_TIME", "de_DE.UTF-8");
    const EnvironmentVariable lang("LANG", "en_GB.UTF-8");
    for (const auto& [locale, zone, date, time] : cases) {
        const Region region(locale, zone);
        EXPECT_EQ(DateFormatter(DateStyle::Short, DateStyle::None).stringFromDate(kInstant), date);
        EXPECT_EQ(DateFormatter(DateStyle::None, DateStyle::Short).stringFromDate(kInstant), time);
    }
}

TEST(DateFormatter, LocalTimeIsTheSystemsInEveryZone) {
    std::vector<std::string> zones{"CET-1CEST", "GMT+02:00", "no zone"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator("/usr/share/zoneinfo")) {
        if (entry.is_regular_file()) {
            zones.push_back(":" + entry.path().string());
        }
    }
    EXPECT_GT(zones.size(), 500) << "the zone database is missing";
    const EnvironmentVariable locale("LC_ALL", "C");
    const DateFormatter clock = DateFormatter::localPattern("yyyyMMddHHmmss");
    for (const std::string& zone : zones) {
        const Region region("fa_IR", zone);  // the locale of a formatter stays, its zone does not
        for (std::time_t half = -80; half < 160; ++half) {
            const std::time_t instant = half * 15'778'476;  // half a year
            std::tm local{};
            ::localtime_r(&instant, &local);
            char text[32];
            std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local);
            ASSERT_EQ(clock.stringFromDate(static_cast<double>(instant)), text) << zone;
        }
    }
}

TEST(DateFormatter, ATimeThatTheClockLeavesOutIsNoneAndOneThatComesTwiceIsTheLater) {
    const Region region("C", "Europe/Berlin");
    const DateFormatter clock = DateFormatter::localPattern("yyyyMMdd HH:mm");
    EXPECT_EQ(clock.dateFromString("20260329 02:30"), std::nullopt);
    EXPECT_EQ(clock.dateFromString("20261025 01:30"), 1792884600);
    EXPECT_EQ(clock.dateFromString("20261025 02:30"), 1792891800);
}

TEST(DateFormatter, TheExchangeFormatIsTheSameForEveryUserAndStrict) {
    const Region region("fa_IR@calendar=persian", "Asia/Tokyo");
    const DateFormatter exchange = DateFormatter::exchangePattern("yyyy-MM-dd'T'HH:mm:ss'Z'");
    EXPECT_EQ(exchange.stringFromDate(kInstant), "2026-11-14T23:44:49Z");
    EXPECT_EQ(exchange.dateFromString("2026-11-14T23:44:49Z"), kInstant);
    EXPECT_EQ(exchange.dateFromString("1969-12-31T23:59:59Z"), -1);
    EXPECT_EQ(DateFormatter::localPattern("yyyyMMdd HH").stringFromDate(kInstant), "14050824 08");
    const std::string wrongs[] = {"2026-11-14T23:44:49Z ",
                                  "2025-02-29T00:00:00Z",
                                  "2026-1-4T3:4:9Z",
                                  "\xFF",
                                  "99999999999-11-14T23:44:49Z",
                                  "\u0662026-11-14T23:44:49Z",
                                  std::string(100'000, '2')};
    for (const std::string& wrong : wrongs) {
        EXPECT_EQ(exchange.dateFromString(wrong), std::nullopt) << wrong.substr(0, 99);
    }
}

TEST(DateFormatter, InstantsBeyondEveryCalendarAreHeldAtTheLimit) {
    for (const std::string calendar : {"gregorian", "chinese", "hebrew", "persian"}) {
        const Region region("en_GB@calendar=" + calendar, "Europe/Berlin");
        const DateFormatter day(DateStyle::Short, DateStyle::Short);
        for (const double limit : {-8.64e12, 8.64e12}) {
            for (const double far : {limit * 1.001, limit * 1e280, limit * HUGE_VAL}) {
                EXPECT_EQ(day.stringFromDate(far), day.stringFromDate(limit)) << calendar;
                EXPECT_LE(localDayOf(far).start, limit);
                EXPECT_GT(localDayOf(far).end, limit);
            }
        }
        EXPECT_EQ(day.stringFromDate(std::nan("")), day.stringFromDate(0));
        EXPECT_EQ(localDayOf(std::nan("")).start, localDayOf(0).start);
    }
}

TEST(DateFormatter, ThreadsMayShareAFormatter) {
    const Region region("de_DE", "Europe/Berlin");
    const DateFormatter clock = DateFormatter::localPattern("yyyyMMddHHmmss");
    const auto readBack = [&clock](int step) {
        for (int round = 0; round < 500; ++round) {
            const std::string text = clock.stringFromDate(kInstant + step * round);
            EXPECT_EQ(clock.stringFromDate(*clock.dateFromString(text)), text);
        }
    };
    const std::jthread other(readBack, 3600);
    readBack(7200);
}

// The day of the instant is the run of all instants around it with the same day number.
void expectDayOf(double instant, const DateFormatter& number) {
    const auto [start, end] = localDayOf(instant);
    const std::string text = number.stringFromDate(instant);
    ASSERT_TRUE(start <= instant && instant < end) << instant;
    for (const double inside : {start, (start + end) / 2, end - 0.001}) {
        ASSERT_EQ(number.stringFromDate(inside), text) << instant;
    }
    ASSERT_NE(number.stringFromDate(start - 0.001), text) << instant;
    ASSERT_NE(number.stringFromDate(end), text) << instant;
}

TEST(LocalDay, ADayIsWhatTheDayNumberSaysInEveryZone) {
    const std::pair<const char*, double> changesOfTheClock[] = {
        {"Europe/Berlin", 1774746000},      // 2026-03-29, 23 hours
        {"Europe/Berlin", 1792890000},      // 2026-10-25, 25 hours
        {"America/Sao_Paulo", 1541300400},  // 2018-11-04 has no midnight
        {"America/Havana", 1762059600},     // midnight comes twice
        {"America/St_Johns", 1162089060},   // 2006-10-29 begins, and begins again
        {"Pacific/Apia", 1325239200},       // 2011-12-30 is left out
        {"Asia/Manila", -3944621160},       // a day less, in 1844
        {"Africa/Monrovia", 63593070},      // by 44 minutes and 30 seconds
    };
    for (const auto& [zone, change] : changesOfTheClock) {
        const Region region("en_GB.UTF-8", zone);
        const DateFormatter number = DateFormatter::localPattern("yyyyMMdd");
        for (double hour = -72; hour <= 72; hour += 0.5) {
            expectDayOf(change + hour * 3600 + 0.25, number);
        }
        for (double instant = -9e9; instant < 9e9; instant += 1.1e7) {
            expectDayOf(instant, number);
        }
    }
}

}  // namespace
}  // namespace quillet::test
