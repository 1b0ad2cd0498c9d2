#include <filesystem>
#include <gmock/gmock.h>
#include <limits>
#include <optional>
#include <sys/stat.h>

#include "platform/desktop/FolderWatcher.h"
#include "platform/desktop/UserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::FolderWatcher;

class FolderWatcherTest : public testing::Test {
protected:
    FolderWatcher watch(const std::string& folder, int levels) {
        return FolderWatcher(folder_.path(folder), levels, [this] { ++count_; });
    }
    void move(const char* from, const char* to) const {
        fs::rename(folder_.path(from), folder_.path(to));
    }
    bool isTold() {
        const bool isTold = waitUntil([this] { return count_ > 0; });
        count_ = 0;
        return isTold;
    }
    // Waits until all changes so far are reported. The two later changes in another folder are
    // reported after them.
    void settle() const {
        int count = 0;
        const FolderWatcher watcher(folder_.makeFolder("settle"), 0, [&count] { ++count; });
        for (int round = 1; round <= 2; ++round) {
            folder_.writeFile("settle/file", "");
            EXPECT_TRUE(waitUntil([&] { return count == round; }));
        }
    }

    TemporaryFolder folder_;
    int count_ = 0;
};

TEST_F(FolderWatcherTest, EveryKindOfChangeIsTold) {
    folder_.writeFile("store/Today/a@b/old", "");
    folder_.makeFolder("elsewhere/account");
    folder_.writeFile("elsewhere/file", "");
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"file written", [&] { folder_.writeFile("store/Today/a@b/new", "text"); }},
        {"file moved", [&] { move("store/Today/a@b/new", "store/Today/a@b/x"); }},
        {"file moved in", [&] { move("elsewhere/file", "store/Today/a@b/file"); }},
        {"file moved out", [&] { move("store/Today/a@b/file", "elsewhere/file"); }},
        {"file removed", [&] { fs::remove(folder_.path("store/Today/a@b/x")); }},
        {"file in the folder", [&] { folder_.writeFile("store/Accounts.plist", ""); }},
        {"folder made", [&] { folder_.makeFolder("store/Today/c@d"); }},
        {"file in the made folder", [&] { folder_.writeFile("store/Today/c@d/new", ""); }},
        {"folder moved in", [&] { move("elsewhere/account", "store/Today/account"); }},
        {"file in the moved folder", [&] { folder_.writeFile("store/Today/account/new", ""); }},
    };
    const auto watcher = watch("store", 2);
    for (const auto& [name, change] : cases) {
        SCOPED_TRACE(name);
        change();
        ASSERT_TRUE(isTold());
    }
}

TEST_F(FolderWatcherTest, AFolderMayComeGoAndComeBack) {
    const auto watcher = watch("container/data/Today", 1);
    folder_.makeFolder("container/data");
    settle();
    EXPECT_EQ(count_, 0);
    folder_.makeFolder("container/data/Today/a@b");
    EXPECT_TRUE(isTold());
    move("container", "away");
    EXPECT_TRUE(isTold());
    folder_.writeFile("away/data/Today/a@b/2", "");
    settle();
    EXPECT_EQ(count_, 0);
    move("away", "container");
    EXPECT_TRUE(isTold());
    folder_.writeFile("container/data/Today/a@b/3", "");
    EXPECT_TRUE(isTold());
}

TEST_F(FolderWatcherTest, ChangesElsewhereAreNotToldAndManyInQuickSuccessionOnce) {
    folder_.makeFolder("store/Today/a@b/deep");
    const auto watcher = watch("store/Today", 1);
    folder_.writeFile("store/other", "");
    folder_.writeFile("store/Today/a@b/deep/file", "");
    settle();
    EXPECT_EQ(count_, 0);
    for (const char* file : {"1", "2", "3"}) {
        folder_.writeFile(std::string("store/Today/") + file, "");
    }
    settle();
    EXPECT_EQ(count_, 1);
}

TEST_F(FolderWatcherTest, AFolderThatCannotBeWatchedIsLoggedOnce) {
    const LogCapture log;
    fs::create_symlink("loop", folder_.path("loop"));
    const auto watcher = watch("loop/store/Today", 0);
    EXPECT_THAT(log.lines(), testing::ElementsAre(testing::StartsWith("FolderWatcher ")));
}

TEST_F(FolderWatcherTest, AWatcherMayBeEndedByTheCall) {
    folder_.makeFolder("store");
    std::optional<FolderWatcher> watcher;
    watcher.emplace(folder_.path("store"), 0, [&] {
        ++count_;
        watcher.reset();
    });
    folder_.writeFile("store/file", "");
    settle();
    folder_.writeFile("store/file", "");
    settle();
    EXPECT_EQ(count_, 1);
}

TEST(UserDefaultsTest, AValueIsKeptAndWhatAnotherProgramWritesIsSeen) {
    auto& defaults = platform::UserDefaults::standard();
    const TemporaryFolder folder;
    const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path("config"));
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(defaults.integerForKey("segmented"), 0);
    defaults.setInteger(kLeast, "segmented");
    EXPECT_EQ(defaults.integerForKey("segmented"), kLeast);
    const std::pair<std::string, std::int64_t> cases[] = {
        {"\"  12 monkeys\"", 12},
        {"@ByteArray(5)", 5},
        {"@Variant(\\0\\0\\0\\xff)", 0},
    };
    for (const auto& [text, expected] : cases) {
        folder.writeFile("config/quillet/today.ini", "[General]\nother=1\nsegmented=" + text);
        EXPECT_EQ(defaults.integerForKey("segmented"), expected) << text;
    }
    defaults.setInteger(2, "segmented");
    EXPECT_EQ(defaults.integerForKey("other"), 1);
}

TEST(UserDefaultsTest, AFileThatCannotBeWrittenLeavesTheValueToThisProcess) {
    auto& defaults = platform::UserDefaults::standard();
    const TemporaryFolder folder;
    const std::string inPlace = folder.makeFolder("fifo/quillet") + "/today.ini";
    const std::string ofLock = folder.makeFolder("fifo lock/quillet") + "/today.ini.lock";
    ASSERT_TRUE(::mkfifo(inPlace.c_str(), 0600) == 0 && ::mkfifo(ofLock.c_str(), 0600) == 0);
    folder.writeFile("file", "");
    for (const char* place : {"file", "fifo", "fifo lock"}) {
        SCOPED_TRACE(place);
        const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path(place));
        EXPECT_EQ(defaults.integerForKey("other"), 0);
        defaults.setInteger(3, "unsaved");
        EXPECT_EQ(defaults.integerForKey("unsaved"), 3);
    }
    const EnvironmentVariable home("XDG_CONFIG_HOME", folder.path("config"));
    defaults.setInteger(4, "unsaved");  // the file can be written again and counts
    folder.writeFile("config/quillet/today.ini", "[General]\nunsaved=15\n");
    EXPECT_EQ(defaults.integerForKey("unsaved"), 15);
}

}  // namespace
}  // namespace quillet::test
