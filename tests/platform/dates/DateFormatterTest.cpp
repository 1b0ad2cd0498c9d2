#include <cmath>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <thread>
#include <vector>

#include "platform/dates/DateFormatter.h"
#include "platform/dates/LocalTime.h"
#include "tests/support/EnvironmentVariable.h"

namespace quillet::test {
namespace {

using platform::DateFormatter;
using platform::DateStyle;
using platform::LocalDay;
using platform::localDayOf;

constexpr double kInstant = 1794699889;  // 2026-11-14 23:44:49 UTC
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The user's region for the length of a scope.
struct Region {
    Region(const std::string& locale, const std::string& zone)
        : all("LC_ALL", locale), timeZone("TZ", zone) {
        platform::refreshTimeZone();
    }
    EnvironmentVariable all;
    EnvironmentVariable timeZone;
};

TEST(DateFormatter, ShortStylesAreThoseOfTheLocaleAndTheZone) {
    const struct {
        const char *locale, *zone, *date, *time;
    } cases[] = {
        {"de_DE.UTF-8", "Europe/Berlin", "15.11.26", "00:44"},
        {"en_GB.UTF-8", "UTC", "14/11/2026", "23:44"},
        {"en_US.UTF-8", "UTC", "11/14/26", "11:44\u202FPM"},
        {"C.UTF-8", "UTC", "11/14/26", "11:44\u202FPM"},
        {"th_TH.UTF-8", "UTC", "14/11/69", "23:44"},
        {"de_DE", "America/St_Johns", "14.11.26", "20:14"},
        {"de_DE", "<+0545>-5:45", "15.11.26", "05:29"},
        {"", "UTC", "14.11.26", "23:44"},  // an empty variable leaves it to LANG
    };
    const EnvironmentVariable lcTime("LC_TIME", "");
    const EnvironmentVariable lang("LANG", "de_DE.UTF-8");
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.locale) + " " + row.zone);
        const Region region(row.locale, row.zone);
        EXPECT_EQ(DateFormatter(DateStyle::Short, DateStyle::None).stringFromDate(kInstant),
                  row.date);
        EXPECT_EQ(DateFormatter(DateStyle::None, DateStyle::Short).stringFromDate(kInstant),
                  row.time);
        EXPECT_EQ(DateFormatter(DateStyle::None, DateStyle::None).stringFromDate(kInstant), "");
    }
}

TEST(DateFormatter, TheLocaleStaysAndTheZoneFollowsTheSystem) {
    const Region region("de_DE", "UTC");
    const DateFormatter day = DateFormatter::localPattern("yyyyMMdd HH");
    EXPECT_EQ(day.stringFromDate(kInstant), "20261114 23");
    const Region later("fa_IR", "Asia/Tokyo");
    EXPECT_EQ(day.stringFromDate(kInstant), "20261115 08");
    EXPECT_EQ(DateFormatter::localPattern("yyyyMMdd").stringFromDate(kInstant), "14050824");
    EXPECT_EQ(DateFormatter(DateStyle::None, DateStyle::Short).stringFromDate(kInstant),
              "\u06F8:\u06F4\u06F4");
}

// The zones of the database with their other names, and other texts that TZ may hold.
std::vector<std::string> zones() {
    std::vector<std::string> zones{"right/Europe/Rome",
                                   ":/usr/share/zoneinfo/Asia/Tokyo",
                                   "GMT+02:00",
                                   "CET-1CEST,M3.5.0,M10.5.0/3",
                                   "no zone"};
    std::ifstream database("/usr/share/zoneinfo/tzdata.zi");
    std::string kind;
    std::string name;
    for (std::string rest; database >> kind; std::getline(database, rest)) {
        if (kind == "Z" || kind == "L") {
            database >> name;
            if (kind == "L") {
                database >> name;  // behind the zone that it stands for
            }
            zones.push_back(name);
        }
    }
    return zones;
}

std::string systemTime(double instant) {
    const auto time = static_cast<std::time_t>(instant);
    std::tm local{};
    ::localtime_r(&time, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local)};
}

TEST(DateFormatter, LocalTimeIsTheSystemsInEveryZone) {
    constexpr double kHalfYear = 365.2425 / 2 * 86400;
    const EnvironmentVariable locale("LC_ALL", "C");
    const DateFormatter clock = DateFormatter::localPattern("yyyyMMddHHmmss");
    const std::vector<std::string> names = zones();
    EXPECT_GT(names.size(), 500) << "the zone database is missing";
    for (const std::string& name : names) {
        const Region region("C", name);
        for (double half = -80; half < 160; ++half) {
            const double instant = std::floor(half * kHalfYear);
            ASSERT_EQ(clock.stringFromDate(instant), systemTime(instant)) << name;
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
    const std::pair<const char*, std::optional<double>> cases[] = {
        {"2026-11-14T23:44:49Z", kInstant},
        {"1969-12-31T23:59:59Z", -1},
        {"2024-02-29T00:00:00Z", 1709164800},
        {"2026-11-14T23:44:49Z ", std::nullopt},
        {"2026-11-14T23:44:49z", std::nullopt},
        {"2025-02-29T00:00:00Z", std::nullopt},
        {"2026-11-14T24:00:00Z", std::nullopt},
        {"2026-1-4T3:4:9Z", std::nullopt},
        {"+2026-11-14T23:44:49Z", std::nullopt},
        {"99999999999-11-14T23:44:49Z", std::nullopt},
        {"\u0662026-11-14T23:44:49Z", std::nullopt},
        {"\xFF", std::nullopt},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(exchange.dateFromString(text), expected);
    }
    EXPECT_EQ(exchange.dateFromString(std::string(100'000, '2')), std::nullopt);
}

TEST(DateFormatter, InstantsBeyondEveryCalendarAreHeldAtTheLimit) {
    for (const std::string calendar : {"gregorian", "chinese", "hebrew", "persian"}) {
        SCOPED_TRACE(calendar);
        const Region region("en_GB@calendar=" + calendar, "Europe/Berlin");
        const DateFormatter day(DateStyle::Short, DateStyle::Short);
        const std::string latest = day.stringFromDate(8.64e12);
        const std::string earliest = day.stringFromDate(-8.64e12);
        for (const double far : {8.64e12 + 1, 1e300, kInfinity}) {
            EXPECT_EQ(day.stringFromDate(far), latest);
            EXPECT_EQ(day.stringFromDate(-far), earliest);
        }
        EXPECT_EQ(day.stringFromDate(std::nan("")), day.stringFromDate(0));
    }
}

TEST(DateFormatter, ThreadsMayShareAFormatter) {
    const Region region("de_DE", "Europe/Berlin");
    const DateFormatter pattern = DateFormatter::localPattern("yyyyMMddHHmmss");
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&pattern, index] {
            for (int round = 0; round < 500; ++round) {
                const double instant = kInstant + 3600.0 * index * round;
                const std::string text = pattern.stringFromDate(instant);
                EXPECT_EQ(pattern.stringFromDate(*pattern.dateFromString(text)), text);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

// The day of the instant is one run of instants that the day number is the same for.
void expectDayOf(double instant, const DateFormatter& number) {
    const LocalDay day = localDayOf(instant);
    const std::string text = number.stringFromDate(instant);
    ASSERT_LE(day.start, instant);
    ASSERT_GT(day.end, instant);
    for (const double inside : {day.start, (day.start + day.end) / 2, day.end - 0.001}) {
        ASSERT_EQ(number.stringFromDate(inside), text) << instant;
    }
    ASSERT_NE(number.stringFromDate(day.start - 0.001), text) << instant;
    ASSERT_NE(number.stringFromDate(day.end), text) << instant;
}

TEST(LocalDay, ADayIsWhatTheDayNumberSaysInEveryZone) {
    const struct {
        const char* zone;
        double instant;  // a change of the clock is near
    } cases[] = {
        {"Europe/Berlin", 1774746000},      // 2026-03-29, 23 hours
        {"Europe/Berlin", 1792890000},      // 2026-10-25, 25 hours
        {"America/Sao_Paulo", 1541300400},  // 2018-11-04 has no midnight
        {"America/Havana", 1762059600},     // midnight comes twice
        {"America/St_Johns", 1162089060},   // 2006-10-29 begins, and begins again
        {"Pacific/Apia", 1325239200},       // 2011-12-30 is left out
        {"Asia/Manila", -3944621160},       // a day less, in 1844
        {"Africa/Monrovia", 63593070},      // by 44 minutes and 30 seconds
        {"CET-1CEST,M3.5.0,M10.5.0/3", 1774746000},
        {"CET-1CEST", 1793512800},  // 2026-11-01
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.zone);
        const Region region("en_GB.UTF-8", row.zone);
        const DateFormatter number = DateFormatter::localPattern("yyyyMMdd");
        for (double hour = -72; hour <= 72; hour += 0.5) {
            expectDayOf(row.instant + hour * 3600 + 0.25, number);
        }
        for (double instant = -9e9; instant < 9e9; instant += 1.1e7) {
            expectDayOf(instant, number);
        }
    }
}

TEST(LocalDay, ExtremeInstantsHaveADayThatHoldsThemAsTheyAreHeld) {
    const Region region("C", "Europe/Berlin");
    for (const double far : {8.64e12, 1e18, kInfinity}) {
        EXPECT_LE(localDayOf(far).start, 8.64e12);
        EXPECT_GT(localDayOf(far).end, 8.64e12);
        EXPECT_LE(localDayOf(-far).start, -8.64e12);
        EXPECT_GT(localDayOf(-far).end, -8.64e12);
    }
    EXPECT_EQ(localDayOf(std::nan("")).start, localDayOf(0).start);
}

}  // namespace
}  // namespace quillet::test
