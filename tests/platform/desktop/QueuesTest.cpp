#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <sys/resource.h>
#include <thread>
#include <vector>

#include "platform/desktop/Queues.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::backgroundQueue;
using platform::drainBackgroundQueue;
using platform::mainQueue;

// Given before the main function, and so before there is an application, by another thread.
std::thread::id earlyBlockThread;
const bool isEarlyBlockGiven = [] {
    std::thread([] {
        mainQueue().async([] { earlyBlockThread = std::this_thread::get_id(); });
    }).join();
    return true;
}();

TEST(MainQueue, ABlockGivenBeforeThereIsAnApplicationRunsOnTheMainThread) {
    ASSERT_TRUE(isEarlyBlockGiven);
    EXPECT_TRUE(waitUntil([] { return earlyBlockThread == std::this_thread::get_id(); }));
}

TEST(MainQueue, BlocksRunInTheOrderGivenAndNeverInsideTheCall) {
    std::vector<int> order;
    mainQueue().async([&] {
        mainQueue().async([&] { order.push_back(3); });
        order.push_back(1);
    });
    mainQueue().async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(MainQueue, BlocksOfEveryThreadRunOnTheMainThreadInTheirThreadsOrder) {
    constexpr int kThreads = 4;
    constexpr int kBlocks = 200;
    std::vector<std::vector<int>> orders(kThreads);
    std::vector<std::thread> threads;
    for (auto& order : orders) {
        threads.emplace_back([&order] {
            for (int number = 0; number < kBlocks; ++number) {
                mainQueue().async([&order, number] { order.push_back(number); });
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& order : orders) {
        EXPECT_TRUE(waitUntil([&] { return order.size() == kBlocks; }));
        EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    }
}

TEST(BackgroundQueue, BlocksRunOnThreadsOfLowestPriorityAndDrainWaitsForAll) {
    std::atomic<int> count{0};
    std::mutex mutex;
    std::set<std::pair<std::thread::id, int>> threads;
    for (int block = 0; block < 100; ++block) {
        backgroundQueue().async([&] {
            const std::lock_guard lock(mutex);
            threads.emplace(std::this_thread::get_id(), ::getpriority(PRIO_PROCESS, 0));
            ++count;
        });
    }
    drainBackgroundQueue();
    EXPECT_EQ(count, 100);
    EXPECT_EQ(::getpriority(PRIO_PROCESS, 0), 0);
    for (const auto& [thread, niceness] : threads) {
        EXPECT_NE(thread, std::this_thread::get_id());
        EXPECT_EQ(niceness, 19);
    }
}

TEST(BackgroundQueue, ABlockThatWaitsDoesNotHoldUpTheOthers) {
    std::mutex held;
    std::atomic<bool> other{false};
    {
        const std::lock_guard lock(held);
        backgroundQueue().async([&] { const std::lock_guard waits(held); });
        backgroundQueue().async([&] { other = true; });
        EXPECT_TRUE(waitUntil([&] { return other.load(); }));
    }
    drainBackgroundQueue();
}

TEST(BackgroundQueue, ABlockMayScheduleBackToTheMainQueue) {
    bool isBack = false;
    backgroundQueue().async([&] { mainQueue().async([&] { isBack = true; }); });
    EXPECT_TRUE(waitUntil([&] { return isBack; }));
}

}  // namespace
}  // namespace quillet::test
