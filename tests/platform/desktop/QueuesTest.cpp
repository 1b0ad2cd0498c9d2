#include <atomic>
#include <gtest/gtest.h>
#include <mutex>
#include <pthread.h>
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

// Another thread adds a block before the main function, when there is no application object yet.
std::thread::id earlyBlockThread;
[[maybe_unused]] const bool isEarlyBlockGiven = [] {
    std::thread([] {
        mainQueue().async([] { earlyBlockThread = std::this_thread::get_id(); });
    }).join();
    return true;
}();

TEST(MainQueue, ABlockGivenBeforeThereIsAnApplicationRunsOnTheMainThread) {
    EXPECT_TRUE(waitUntil([] { return earlyBlockThread == std::this_thread::get_id(); }));
}

TEST(MainQueue, BlocksRunInTheOrderGivenAndNeverInsideTheCall) {
    std::vector<int> order;
    mainQueue().async([&] {
        mainQueue().async([&] { order.push_back(3); });
        QCoreApplication::processEvents();  // runs none of the others inside this block
        order.push_back(1);
    });
    mainQueue().async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(BackgroundQueue, BlocksRunOnThreadsOfLowestPriorityAndDrainWaitsForAll) {
    std::atomic<int> count{0};
    for (int block = 0; block < 100; ++block) {
        backgroundQueue().async([&] {
            EXPECT_EQ(::getpriority(PRIO_PROCESS, 0), 19);
            ++count;
        });
    }
    drainBackgroundQueue();
    EXPECT_EQ(count, 100);
    EXPECT_EQ(::getpriority(PRIO_PROCESS, 0), 0);
}

TEST(BackgroundQueue, BlocksRunAlsoWhereTheSystemRefusesMoreThreads) {
    pthread_attr_t attributes;
    ASSERT_EQ(::pthread_getattr_default_np(&attributes), 0);
    pthread_attr_t refused = attributes;
    ASSERT_EQ(::pthread_attr_setstacksize(&refused, std::size_t{1} << 50), 0);
    ASSERT_EQ(::pthread_setattr_default_np(&refused), 0);
    std::atomic<int> count{0};
    for (int block = 0; block < 10; ++block) {
        EXPECT_NO_THROW(backgroundQueue().async([&] { ++count; }));
    }
    EXPECT_EQ(::pthread_setattr_default_np(&attributes), 0);
    ::pthread_attr_destroy(&attributes);
    drainBackgroundQueue();
    EXPECT_EQ(count, 10);
}

TEST(BackgroundQueue, ABlockThatWaitsDoesNotHoldUpTheOthers) {
    std::mutex held;
    std::unique_lock lock(held);
    std::atomic<bool> other{false};
    backgroundQueue().async([&] { const std::lock_guard waits(held); });
    backgroundQueue().async([&] { other = true; });
    EXPECT_TRUE(waitUntil([&] { return other.load(); }));
    lock.unlock();
    drainBackgroundQueue();
}

}  // namespace
}  // namespace quillet::test
