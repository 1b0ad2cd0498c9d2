#include <filesystem>
#include <gmock/gmock.h>
#include <stdexcept>
#include <sys/stat.h>

#include "platform/files/FileCoordinator.h"
#include "platform/files/LockWait.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitFor.h"

namespace quillet::test {
namespace {

using platform::FileCoordinator;

class FileCoordinatorTest : public testing::Test {
protected:
    FileCoordinatorTest() { ::chmod(folder_.makeFolder("run").c_str(), 0700); }

    TemporaryFolder folder_;
    EnvironmentVariable runtime_{"XDG_RUNTIME_DIR", folder_.path("run")};
    std::string data_ = folder_.makeFolder("container/data");
    std::string today_ = data_ + "/Today";
};

TEST_F(FileCoordinatorTest, AProcessWaitsExactlyWhenAnotherOneHoldsTheSameItem) {
    ASSERT_EQ(::symlink("container", folder_.path("link").c_str()), 0);
    folder_.makeFolder("outside");
    ASSERT_EQ(::symlink("../../outside", (data_ + "/Away").c_str()), 0);
    ASSERT_EQ(::symlink("loop", (data_ + "/loop").c_str()), 0);
    const std::string name(255, 'n');
    const auto at = [this](const std::string& item) {
        return item.starts_with('/') ? folder_.path(item.substr(1)) : data_ + "/" + item;
    };
    constexpr auto kRead = Access::Read;
    constexpr auto kWrite = Access::Write;
    const struct {
        std::string name, held;
        Access holder;
        std::string item;
        Access access;
        bool waits;
    } cases[] = {
        // "/x" is beside the container, "x" in its data folder.
        {"reader, writer inside", "Today/a@b/1.plist", kWrite, "Today", kRead, true},
        {"writer, reader", "Today", kRead, "Today/a@b", kWrite, true},
        {"two readers", "Today", kRead, "Today", kRead, false},
        {"unrelated items", "Today", kWrite, "Accounts.plist", kWrite, false},
        {"link to the container", "/link/data/Today/x", kWrite, "Today", kRead, true},
        {"dots and slashes", "/container//data/./Today/", kWrite, "Contacts/../Today", kRead, true},
        {"entry that leads out", "Away/file", kWrite, "Away", kRead, true},
        {"links in a circle", "loop/x", kWrite, "loop", kRead, true},
        {"data folder itself", "", kWrite, "/link/data", kWrite, true},
        {"outside of the data folder", "/outside/x", kWrite, "/outside/x", kRead, true},
        {"elsewhere outside", "/outside/x", kWrite, "/outside/y", kWrite, false},
        {"long names", name + "/x", kWrite, name, kRead, true},
        {"other long names", name, kWrite, "m" + name.substr(1), kWrite, false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const CoordinatingProcess holder(data_, at(row.held), row.holder);
        ASSERT_TRUE(waitFor([&] { return holder.isInside(); }));
        const auto busy =
            FileCoordinator(data_).coordinateWritingIfFree(at(row.item), [](const auto&) {});
        EXPECT_EQ(busy.has_value(), row.waits || row.held == row.item);
        const CoordinatingProcess other(data_, at(row.item), row.access);
        ASSERT_TRUE(waitFor([&] { return other.isInside() || other.isWaiting(); }));
        EXPECT_EQ(!other.isInside(), row.waits);
        holder.letGo();
        EXPECT_TRUE(waitFor([&] { return other.isInside(); }));
    }
}

TEST_F(FileCoordinatorTest, TheLockOfAKilledProcessIsFree) {
    CoordinatingProcess holder(data_, today_, Access::Write);
    ASSERT_TRUE(waitFor([&] { return holder.isInside(); }));
    const CoordinatingProcess reader(data_, today_, Access::Read);
    ASSERT_TRUE(waitFor([&] { return reader.isWaiting(); }));
    holder.kill();
    EXPECT_TRUE(waitFor([&] { return reader.isInside(); }));
}

TEST_F(FileCoordinatorTest,
       TheAccessorGetsThePathAsItIsSpelledAndItsExceptionLeavesNeitherLockNorFile) {
    const std::string path = data_ + "//../data/Today";
    const auto throwing = [](const std::string& spelled) { throw std::runtime_error(spelled); };
    EXPECT_THAT([&] { FileCoordinator(data_).coordinateWriting(path, throwing); },
                testing::ThrowsMessage<std::runtime_error>(path));
    const CoordinatingProcess other(data_, path, Access::Write);  // the exception freed the item
    EXPECT_TRUE(waitFor([&] { return other.isInside(); }));
    EXPECT_TRUE(std::filesystem::is_empty(data_));
}

TEST_F(FileCoordinatorTest, AWaitThatIsGivenUpIsAnErrorAndLeavesNoLock) {
    const platform::LockWaiter before = platform::lockWaiter();
    platform::setLockWaiter([](const platform::LockWait& wait) {
        EXPECT_TRUE(waitFor([] { return waitsForLock(::getpid()); })) << wait.item();
    });
    const CoordinatingProcess holder(data_, today_, Access::Write);
    ASSERT_TRUE(waitFor([&] { return holder.isInside(); }));
    const auto error = FileCoordinator(data_).coordinateWriting(
        today_, [](const std::string&) { FAIL() << "the lock is held"; });
    platform::setLockWaiter(before);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, ECANCELED);
    holder.letGo();
    EXPECT_FALSE(FileCoordinator(data_).coordinateWriting(today_, [](const std::string&) {}));
}

TEST_F(FileCoordinatorTest, WithoutAPathOrALockFileTheAccessorDoesNotRunAndTheErrorSaysWhy) {
    const OrdinaryPermissions ordinary;
    const EnvironmentVariable temporary("TMPDIR", folder_.path("missing"));
    ::chmod(folder_.makeFolder("readonly").c_str(), 0500);
    ASSERT_FALSE(FileCoordinator(data_).coordinateReading(data_, [](const std::string&) {}));
    const std::string fifo =
        folder_.path("run/quillet/") +
        platform::FileLock::nameFor(std::filesystem::canonical(data_).string(), "/Fifo.lock");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const struct {
        const char* runtimeFolder;
        std::optional<std::string> path;
        std::string reason;
    } cases[] = {
        {"run", std::nullopt, "no path"},
        {"missing", today_, "missing"},
        {"readonly", today_, "readonly/quillet: Permission denied"},
        {"run", data_ + "/Fifo", "Fifo.lock is no regular file"},
    };
    for (const auto& row : cases) {
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder_.path(row.runtimeFolder));
        const auto error = FileCoordinator(data_).coordinateReading(
            row.path, [&](const std::string&) { ADD_FAILURE() << row.reason; });
        EXPECT_THAT(error.value_or(platform::Error{}).text, testing::HasSubstr(row.reason));
    }
}

}  // namespace
}  // namespace quillet::test
