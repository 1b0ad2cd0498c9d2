#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "platform/base/NotificationCenter.h"

namespace quillet::test {

using platform::Notification;
using platform::NotificationCenter;

TEST(NotificationCenter, ObserversAreCalledInTheOrderOfRegistrationUnlessTheyWereRemoved) {
    NotificationCenter center;
    std::string called;
    const char first = '1';
    const char second = '2';
    const auto adding = [&called](const char* text) {
        return [&called, text](const Notification&) { called += text; };
    };
    center.addObserver(&second, "other", adding("other"));
    center.addObserver(&first, "name", [&](const Notification& posted) {
        called += posted.name + std::any_cast<std::string>(posted.object);
        center.removeObserver(&second);
        center.removeObserver(&first);
        center.addObserver(&first, "name", adding(" late"));
        center.addObserver(&second, "name", adding(" last"));
    });
    center.addObserver(&second, "name", adding("removed"));
    center.postNotification("name", std::string(" object"));
    EXPECT_EQ(called, "name object");
    center.postNotification("name");
    EXPECT_EQ(called, "name object late last");
}

TEST(NotificationCenter, ThreadsMayRegisterPostAndRemoveAtOnce) {
    constexpr int kRounds = 200;
    NotificationCenter center;
    std::atomic<int> count{0};
    center.addObserver(&center, "name", [&](const Notification&) { ++count; });
    const auto use = [&](const int mine) {
        for (int round = 0; round < kRounds; ++round) {
            center.addObserver(&mine, "name", [](const Notification&) {});
            center.postNotification("name");
            center.removeObserver(&mine);
        }
    };
    std::jthread other(use, 1);
    use(2);
    other.join();
    EXPECT_EQ(count, 2 * kRounds);
}

}  // namespace quillet::test
