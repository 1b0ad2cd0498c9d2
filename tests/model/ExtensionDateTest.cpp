#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <random>

#include "model/CentralDateCache.h"
#include "model/ExtensionDate.h"
#include "tests/support/EnvironmentVariable.h"

namespace quillet::test {

namespace {

// The shared formatters keep the region of their first use, so it is set before any test runs.
class Region : public ::testing::Environment {
public:
    void SetUp() override {
        setenv("LC_ALL", "it_IT.UTF-8", 1);
        setenv("TZ", "Europe/Rome", 1);
        tzset();
        ExtensionDate::shared();
    }
};

const auto* const kRegion = ::testing::AddGlobalTestEnvironment(new Region);  // GoogleTest's own

constexpr double kNow = 1794697200;  // 2026-11-15 00:00:00 in Rome

}  // namespace

TEST(ExtensionDate, TodayShowsATimeAndAnyOtherDayADate) {
    ASSERT_NE(kRegion, nullptr);
    const ExtensionDate& dates = ExtensionDate::shared();
    const struct {
        double offset;  // seconds from midnight
        const char* text;
        int day;
    } cases[] = {
        {-1, "14/11/26", 20261114},
        {1, "00:00", 20261115},
        {14 * 3600 + 5 * 60, "14:05", 20261115},
        {24 * 3600 - 1, "23:59", 20261115},
        {24 * 3600, "16/11/26", 20261116},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.offset);
        EXPECT_EQ(dates.centralDate(kNow + row.offset, kNow + 3600), row.text);
        EXPECT_EQ(dates.IntDate(kNow + row.offset), row.day);
    }
    EXPECT_EQ(dates.centralDate(std::nullopt), "");
    EXPECT_EQ(dates.IntDate(std::nullopt), 0);
    EXPECT_EQ(dates.exchangeDate("2026-11-14T23:44:49Z"), 1794699889.0);
    EXPECT_EQ(dates.exchangeDate("2026-11-14T23:44:49"), std::nullopt);
    EXPECT_EQ(dates.exchangeDate(std::nullopt), std::nullopt);
}

TEST(CentralDateCache, GivesTheTextsThatTheFormattersGive) {
    std::mt19937_64 random(20261115);
    std::uniform_real_distribution<double> days(-400, 400);
    std::vector<double> dates{0, -1e300, 1e300, -62135596800.0, kNow, kNow - 1, kNow + 86400};
    for (int count = 0; count < 500; ++count) {
        dates.push_back(kNow + days(random) * 86400);
        dates.push_back(kNow + days(random) * 100);  // around today
    }
    const auto texts = RecordBlock::make();
    // The system's zone changes between two reads, and back.
    for (const auto& [zone, evening] :
         {std::pair("Pacific/Auckland", "11:59"), std::pair("Europe/Rome", "14/11/26")}) {
        const EnvironmentVariable timeZone("TZ", zone);
        CentralDateCache cache(kNow + 3600, *texts);
        EXPECT_EQ(cache.text(kNow - 1).view(), evening);
        for (int round = 0; round < 2; ++round) {  // the second time from the cache
            for (const double date : dates) {
                ASSERT_EQ(cache.text(date).view(),
                          ExtensionDate::shared().centralDate(date, kNow + 3600))
                    << date;
            }
        }
    }
}

}  // namespace quillet::test
