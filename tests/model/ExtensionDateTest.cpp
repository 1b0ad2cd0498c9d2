#include <cstdlib>
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
        ExtensionDate::shared();
    }
};

[[maybe_unused]] const auto* const kRegion = ::testing::AddGlobalTestEnvironment(new Region);

constexpr double kNow = 1794697200;  // 2026-11-15 00:00:00 in Rome

TEST(ExtensionDate, TodayShowsATimeAndAnyOtherDayADate) {
    const ExtensionDate& dates = ExtensionDate::shared();
    const std::tuple<std::optional<double>, const char*, int> cases[] = {
        {kNow - 1, "14/11/26", 20261114},
        {kNow + 1, "00:00", 20261115},
        {kNow + 24 * 3600 - 1, "23:59", 20261115},
        {kNow + 24 * 3600, "16/11/26", 20261116},
        {std::nullopt, "", 0},
    };
    for (const auto& [date, text, day] : cases) {
        EXPECT_EQ(dates.centralDate(date, kNow + 3600), text);
        EXPECT_EQ(dates.IntDate(date), day);
    }
    EXPECT_EQ(dates.exchangeDate("2026-11-14T23:44:49Z"), 1794699889.0);
    EXPECT_EQ(dates.exchangeDate(std::nullopt), std::nullopt);
}

TEST(CentralDateCache, GivesTheTextsThatTheFormattersGive) {
    std::mt19937_64 random(20261115);
    std::uniform_real_distribution<double> days(-400, 400);
    std::vector<double> dates{0, -1e300, 1e300, -62135596800.0, kNow, kNow - 1, kNow + 86400};
    for (int count = 0; count < 500; ++count) {
        const double near = kNow + days(random) * 100;                         // around today
        dates.insert(dates.end(), {kNow + days(random) * 86400, near, near});  // twice: cached
    }
    const auto texts = RecordBlock::make();
    // The system's zone changes between two reads, and back.
    for (const auto& [zone, evening] :
         {std::pair("Pacific/Auckland", "11:59"), std::pair("Europe/Rome", "14/11/26")}) {
        const EnvironmentVariable timeZone("TZ", zone);
        CentralDateCache cache(kNow + 3600, *texts);
        EXPECT_EQ(cache.text(kNow - 1).view(), evening);
        for (const double date : dates) {
            ASSERT_EQ(cache.text(date).view(),
                      ExtensionDate::shared().centralDate(date, kNow + 3600))
                << date;
        }
    }
}

}  // namespace
}  // namespace quillet::test
