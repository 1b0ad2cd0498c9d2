#include <atomic>
#include <chrono>
#include <csignal>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/foundation/FileCoordinator.h"
#include "platform/foundation/FileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::FileCoordinator;

bool waitFor(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Whether the kernel lists the process among those that wait for a lock.
bool waitsForLock(pid_t process) {
    std::ifstream locks("/proc/locks");
    const std::string number = " " + std::to_string(process) + " ";
    for (std::string line; std::getline(locks, line);) {
        if (line.find("->") != std::string::npos && line.find(number) != std::string::npos) {
            return true;
        }
    }
    return false;
}

enum class Access { Read, Write };

// A process that coordinates one item; it stays in the accessor until it is let go.
class Coordinating {
public:
    Coordinating(const std::string& dataFolder, const std::string& path, Access access) {
        if (::pipe(entered_) != 0 || ::pipe(go_) != 0) {
            throw std::runtime_error("no pipe");
        }
        process_ = ::fork();
        if (process_ == 0) {
            ::close(go_[1]);
            const FileCoordinator coordinator(dataFolder);
            const auto accessor = [this](const std::string&) {
                char byte = 'e';
                (void)!::write(entered_[1], &byte, 1);
                (void)!::read(go_[0], &byte, 1);
            };
            const auto error = access == Access::Read
                                   ? coordinator.coordinateReading(path, accessor)
                                   : coordinator.coordinateWriting(path, accessor);
            ::_exit(error ? 1 : 0);
        }
    }
    ~Coordinating() {
        kill();
        for (const int end : {entered_[0], entered_[1], go_[0], go_[1]}) {
            ::close(end);
        }
    }
    Coordinating(const Coordinating&) = delete;
    Coordinating& operator=(const Coordinating&) = delete;

    bool isInside() const {
        pollfd readable{entered_[0], POLLIN, 0};
        return ::poll(&readable, 1, 0) == 1;
    }
    bool isWaiting() const { return waitsForLock(process_); }
    void letGo() const { (void)!::write(go_[1], "g", 1); }
    void kill() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = 0;
        }
    }

private:
    int entered_[2] = {};
    int go_[2] = {};
    pid_t process_ = 0;
};

class FileCoordinatorTest : public testing::Test {
protected:
    FileCoordinatorTest() { ::chmod(folder_.makeFolder("run").c_str(), 0700); }

    TemporaryFolder folder_;
    EnvironmentVariable runtime_{"XDG_RUNTIME_DIR", folder_.path("run")};
    std::string data_ = folder_.makeFolder("container/data");
};

TEST_F(FileCoordinatorTest, AProcessWaitsExactlyWhenAnotherOneHoldsTheSameItem) {
    ASSERT_EQ(::symlink("container", folder_.path("link").c_str()), 0);
    folder_.makeFolder("outside");
    folder_.makeFolder("container/data/Today");
    ASSERT_EQ(::symlink("../../outside", (data_ + "/Away").c_str()), 0);
    const std::string longData = "container/" + std::string(200, '%') + "/data";
    const std::string longName(255, 'n');
    const struct {
        const char* name;
        std::string heldData, held;
        Access holder;
        std::string data, item;
        Access access;
        bool waits;
    } cases[] = {
        {"reader, writer inside",
         "container/data",
         "container/data/Today/a@b/1.plist",
         Access::Write,
         "container/data",
         "container/data/Today",
         Access::Read,
         true},
        {"writer, reader",
         "container/data",
         "container/data/Today",
         Access::Read,
         "container/data",
         "container/data/Today/a@b",
         Access::Write,
         true},
        {"two readers",
         "container/data",
         "container/data/Today",
         Access::Read,
         "container/data",
         "container/data/Today",
         Access::Read,
         false},
        {"unrelated items",
         "container/data",
         "container/data/Today",
         Access::Write,
         "container/data",
         "container/data/Accounts.plist",
         Access::Write,
         false},
        {"link to the container",
         "link/data",
         "link/data/Today/x",
         Access::Write,
         "container/data",
         "container/data/Today",
         Access::Read,
         true},
        {"dots and slashes",
         "container/data",
         "container/../container//data/./Today/",
         Access::Write,
         "container/data/",
         "container/data/Contacts/../Today",
         Access::Read,
         true},
        {"entry that leads out",
         "container/data",
         "container/data/Away/file",
         Access::Write,
         "container/data",
         "container/data/Away",
         Access::Read,
         true},
        {"data folder that does not exist",
         "container/none",
         "container/none/Today",
         Access::Write,
         "link/none",
         "container/none/Today/x",
         Access::Read,
         true},
        {"another container",
         "container/none",
         "container/none/Today",
         Access::Write,
         "container/data",
         "container/data/Today",
         Access::Write,
         false},
        {"data folder itself",
         "container/data",
         "container/data/",
         Access::Write,
         "container/data",
         "link/data",
         Access::Write,
         true},
        {"outside of the data folder",
         "container/data",
         "outside/x",
         Access::Write,
         "container/none",
         "container/../outside/x",
         Access::Read,
         true},
        {"elsewhere outside",
         "container/data",
         "outside/x",
         Access::Write,
         "container/data",
         "outside/y",
         Access::Write,
         false},
        {"long names",
         longData,
         longData + "/" + longName + "/x",
         Access::Write,
         longData,
         longData + "/" + longName,
         Access::Read,
         true},
        {"other long names",
         longData,
         longData + "/" + longName,
         Access::Write,
         longData,
         longData + "/m" + longName.substr(1),
         Access::Write,
         false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const Coordinating holder(folder_.path(row.heldData), folder_.path(row.held), row.holder);
        ASSERT_TRUE(waitFor([&] { return holder.isInside(); }));
        const Coordinating other(folder_.path(row.data), folder_.path(row.item), row.access);
        ASSERT_TRUE(waitFor([&] { return other.isInside() || other.isWaiting(); }));
        EXPECT_EQ(!other.isInside(), row.waits);
        holder.letGo();
        EXPECT_TRUE(waitFor([&] { return other.isInside(); }));
    }
}

TEST_F(FileCoordinatorTest, TheLockOfAKilledProcessIsFree) {
    Coordinating holder(data_, data_ + "/Today", Access::Write);
    ASSERT_TRUE(waitFor([&] { return holder.isInside(); }));
    const Coordinating reader(data_, data_ + "/Today", Access::Read);
    ASSERT_TRUE(waitFor([&] { return reader.isWaiting(); }));
    holder.kill();
    EXPECT_TRUE(waitFor([&] { return reader.isInside(); }));
}

TEST_F(FileCoordinatorTest, AnItemWhoseAccessorThrewIsFree) {
    const FileCoordinator coordinator(data_);
    EXPECT_THROW(coordinator.coordinateWriting(
                     data_ + "/Today", [](const std::string&) { throw std::runtime_error("x"); }),
                 std::runtime_error);
    const Coordinating other(data_, data_ + "/Today", Access::Write);
    EXPECT_TRUE(waitFor([&] { return other.isInside(); }));
}

TEST_F(FileCoordinatorTest, ThreadsOfOneProcessWaitForEachOther) {
    const FileCoordinator coordinator(data_);
    std::atomic<int> result{0};  // the sanitizer does not know of file locks
    std::thread other;
    EXPECT_FALSE(coordinator.coordinateWriting(data_ + "/Today", [&](const std::string&) {
        other = std::thread([&] {
            coordinator.coordinateReading(data_ + "/Today",
                                          [&](const std::string&) { result = result * 2; });
        });
        EXPECT_TRUE(waitFor([] { return waitsForLock(::getpid()); }));
        result = 21;
    }));
    other.join();
    EXPECT_EQ(result, 42);
}

TEST_F(FileCoordinatorTest, TheAccessorGetsThePathAsItIsSpelledAndTheContainerIsNotWrittenTo) {
    const std::string path = data_ + "//../data/Today";
    std::string given;
    const auto note = [&](const std::string& spelled) { given = spelled; };
    ASSERT_EQ(::chmod(data_.c_str(), 0500), 0);
    EXPECT_FALSE(FileCoordinator(data_).coordinateWriting(path, note));
    EXPECT_EQ(given, path);
    EXPECT_TRUE(platform::FileManager::contentsOfFolder(data_).value().empty());
    std::string component = folder_.path("run/quillet/");
    for (const char character : data_) {
        component += character == '/' ? "%2F" : std::string(1, character);
    }
    EXPECT_TRUE(platform::FileManager::fileExists(component + "/Today.lock"));
}

TEST_F(FileCoordinatorTest, WithoutAPathOrAUsableRuntimeFolderTheAccessorDoesNotRun) {
    ::chmod(folder_.makeFolder("open").c_str(), 0755);
    ::chmod(folder_.makeFolder("others").c_str(), 0700);
    folder_.writeFile("file", "");
    ASSERT_EQ(::symlink("loop", (data_ + "/loop").c_str()), 0);
    const struct {
        const char* name;
        const char* runtime;
        std::optional<std::string> path;
    } cases[] = {
        {"no path", "run", std::nullopt},
        {"missing folder", "missing", data_ + "/Today"},
        {"folder that others may enter", "open", data_ + "/Today"},
        {"somebody else's folder", "others", data_ + "/Today"},
        {"no folder", "file", data_ + "/Today"},
        {"links in a circle", "run", data_ + "/loop/x"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        if (std::string_view(row.runtime) == "others" &&
            ::chown(folder_.path("others").c_str(), 1, 1) != 0) {
            continue;  // only root can give a folder away
        }
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder_.path(row.runtime));
        bool ran = false;
        const auto note = [&](const std::string&) { ran = true; };
        EXPECT_TRUE(FileCoordinator(data_).coordinateReading(row.path, note));
        EXPECT_TRUE(FileCoordinator(data_).coordinateWriting(row.path, note));
        EXPECT_FALSE(ran);
    }
}

}  // namespace
}  // namespace quillet::test
