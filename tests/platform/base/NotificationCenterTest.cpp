#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "platform/base/NotificationCenter.h"

namespace quillet::test {
namespace {

using platform::Notification;
using platform::NotificationCenter;

// Notes what was called, as texts.
class NotificationCenterTest : public testing::Test {
protected:
    NotificationCenter::Handler noting(std::string text) {
        return [this, text = std::move(text)](const Notification&) { called_.push_back(text); };
    }

    NotificationCenter center_;
    std::vector<std::string> called_;
    const int first_ = 1;
    const int second_ = 2;
};

TEST_F(NotificationCenterTest, ObserversOfTheNameAreCalledAtOnceInTheOrderOfRegistration) {
    center_.addObserver(&second_, "name", noting("second"));
    center_.addObserver(&first_, "other", noting("other"));
    center_.addObserver(&first_, "name", [this](const Notification& notification) {
        called_.push_back(std::any_cast<std::string>(notification.object) + notification.name);
    });
    center_.postNotification("name", std::string("object of "));
    EXPECT_EQ(called_, (std::vector<std::string>{"second", "object of name"}));
}

TEST_F(NotificationCenterTest, AnObserverThatIsRemovedWhilePostingIsNotCalledAnyMore) {
    center_.addObserver(&first_, "name", [this](const Notification&) {
        called_.emplace_back("first");
        center_.removeObserver(&second_);
        center_.removeObserver(&first_);
        center_.addObserver(&first_, "name", noting("late"));
    });
    center_.addObserver(&second_, "name", noting("second"));
    center_.postNotification("name");
    EXPECT_EQ(called_, std::vector<std::string>{"first"});
    center_.postNotification("name");
    EXPECT_EQ(called_, (std::vector<std::string>{"first", "late"}));
}

TEST_F(NotificationCenterTest, ThreadsMayRegisterPostAndRemoveAtOnce) {
    std::atomic<int> count{0};
    center_.addObserver(this, "name", [&](const Notification&) { ++count; });
    constexpr int kRounds = 200;
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&] {
            const int mine = 0;
            for (int round = 0; round < kRounds; ++round) {
                center_.addObserver(&mine, "name", [](const Notification&) {});
                center_.postNotification("name");
                center_.removeObserver(&mine);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 4 * kRounds);
}

}  // namespace
}  // namespace quillet::test
