#include <ctime>
#include <gtest/gtest.h>
#include <string>

#include "platform/foundation/DateFormatter.h"
#include "tests/support/EnvironmentVariable.h"

namespace quillet::test {
namespace {

constexpr std::time_t kStart = 1704067200;  // 2024-01-01, a leap year
constexpr std::time_t kEnd = 1798761600;    // 2027-01-01

std::string localTimeOfTheLibrary(std::time_t instant) {
    std::tm local{};
    ::localtime_r(&instant, &local);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &local)};
}

TEST(PosixTimeZone, ClocksGoAsThoseOfTheLibrary) {
    for (const char* zone : {"JST-9",
                             "GMT+02:00",
                             "UTC-2",
                             "XYZ5:30:15",
                             "<+0545>-5:45",
                             "CET-1CEST,M3.5.0,M10.5.0/3",
                             "AEST-10AEDT,M10.1.0,M4.1.0/3",
                             "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",
                             "IST-2IDT,M3.4.4/26,M10.5.0",
                             "ABC5DEF3:30,J60/0,300/12:30:15",
                             "ABC5DEF,59,J59",
                             "ABC3DEF,0/0,J365/25",
                             "no zone",
                             "CET",
                             "Europe/Rome"}) {
        SCOPED_TRACE(zone);
        const EnvironmentVariable variable("TZ", zone);
        ::tzset();
        const auto clock = platform::DateFormatter::localPattern("yyyyMMddHHmmss");
        for (std::time_t now = kStart; now < kEnd && !HasFailure(); now += 3 * 3600 + 1111) {
            EXPECT_EQ(clock.stringFromDate(static_cast<double>(now)), localTimeOfTheLibrary(now));
        }
    }
    ::tzset();
}

TEST(PosixTimeZone, ARuleThatIsCutOffMeansNoSummerTime) {
    const EnvironmentVariable zone("TZ", "CET-1CEST,M3.5.0,M10");
    const auto day = platform::LocalDays().dayOf(1774785600);  // 2026-03-29
    EXPECT_EQ((day.end - day.start) / 3600, 24);
}

}  // namespace
}  // namespace quillet::test
