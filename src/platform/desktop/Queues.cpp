#include "platform/desktop/Queues.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <utility>

namespace quillet::platform {

namespace {

class MainQueue final : public Queue {
public:
    void async(Block block) override {
        const std::lock_guard lock(mutex_);
        blocks_.push_back(std::move(block));
        if (runner_ != nullptr) {
            wakeUp();
        }
    }

    // Binds the queue to the main thread once there is an application object. Blocks that were
    // added before run in its event loop.
    void attach() {
        const std::lock_guard lock(mutex_);
        if (runner_ == nullptr) {
            runner_ = new Runner(*this);
            runner_->moveToThread(QCoreApplication::instance()->thread());
            std::for_each(blocks_.begin(), blocks_.end(), [this](const Block&) { wakeUp(); });
        }
    }

private:
    // Each event runs one block, so that blocks take turns with other events.
    class Runner final : public QObject {
    public:
        explicit Runner(MainQueue& queue) : queue_(queue) {}

    protected:
        void customEvent(QEvent* /*event*/) override { queue_.runNext(); }

    private:
        MainQueue& queue_;
    };

    void wakeUp() { QCoreApplication::postEvent(runner_, new QEvent(QEvent::User)); }

    // A block may run an event loop of its own; other blocks are postponed until it has ended.
    void runNext() {
        if (isRunning_) {
            ++postponed_;
            return;
        }
        isRunning_ = true;
        runFirst();
        isRunning_ = false;
        for (; postponed_ > 0; --postponed_) {
            wakeUp();
        }
    }

    void runFirst() {
        Block block;
        {
            const std::lock_guard lock(mutex_);
            block = std::move(blocks_.front());
            blocks_.pop_front();
        }
        block();
    }

    std::mutex mutex_;
    std::deque<Block> blocks_;
    Runner* runner_ = nullptr;  // lives on the main thread, as long as the program
    bool isRunning_ = false;    // this and the next: main thread only
    std::size_t postponed_ = 0;
};

// The queues are never destroyed: threads may add blocks until the process ends.
MainQueue& theMainQueue() {
    static auto* const queue = new MainQueue;
    return *queue;
}

class BackgroundQueue final : public Queue {
public:
    void async(Block block) override {
        std::unique_lock lock(mutex_);
        blocks_.push_back(std::move(block));
        if (blocks_.size() > idle_ && workers_ < kMaximumWorkers) {
            addWorker();
        }
        if (workers_ == 0) {
            runNext(lock);
        } else {
            given_.notify_one();
        }
    }

    bool drain(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        return done_.wait_for(lock, limit, [this] { return blocks_.empty() && running_ == 0; });
    }

private:
    // A block may wait for another program's lock; the others must not wait with it.
    static constexpr std::size_t kMaximumWorkers = 4;
    static constexpr int kNiceness = 19;

    // If the system has no more threads, the existing ones do the work.
    void addWorker() {
        try {
            std::thread([this] { work(); }).detach();
            ++workers_;
        } catch (const std::system_error&) {
            return;
        }
    }

    // Runs the block that has waited longest. The lock is released meanwhile.
    void runNext(std::unique_lock<std::mutex>& lock) {
        Block block = std::move(blocks_.front());
        blocks_.pop_front();
        ++running_;
        lock.unlock();
        block();
        block = nullptr;  // destroys what it holds before it counts as done
        lock.lock();
        --running_;
        done_.notify_all();
    }

    [[noreturn]] void work() {
        // On Linux this sets the niceness of the calling thread only. The idle scheduling class is
        // not used, since its threads may never run on a busy machine.
        ::setpriority(PRIO_PROCESS, 0, kNiceness);
        std::unique_lock lock(mutex_);
        for (;;) {
            ++idle_;
            given_.wait(lock, [this] { return !blocks_.empty(); });
            --idle_;
            runNext(lock);
        }
    }

    std::mutex mutex_;
    std::condition_variable given_;
    std::condition_variable done_;
    std::deque<Block> blocks_;
    std::size_t workers_ = 0;
    std::size_t idle_ = 0;
    std::size_t running_ = 0;
};

BackgroundQueue& theBackgroundQueue() {
    static auto* const queue = new BackgroundQueue;
    return *queue;
}

}  // namespace

Queue& mainQueue() {
    static std::once_flag hooked;
    // Runs at once if there is an application object already.
    std::call_once(hooked, [] { qAddPreRoutine([] { theMainQueue().attach(); }); });
    return theMainQueue();
}

Queue& backgroundQueue() {
    return theBackgroundQueue();
}

bool drainBackgroundQueue(std::chrono::milliseconds limit) {
    return theBackgroundQueue().drain(limit);
}

}  // namespace quillet::platform
