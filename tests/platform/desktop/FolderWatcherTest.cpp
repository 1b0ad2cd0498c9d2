#include <filesystem>
#include <gmock/gmock.h>
#include <optional>

#include "platform/desktop/FolderWatcher.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

namespace fs = std::filesystem;
using platform::FolderWatcher;

class FolderWatcherTest : public testing::Test {
protected:
    FolderWatcher watch(const std::string& folder, int levels, int& count) {
        return FolderWatcher(folder_.path(folder), levels, [&count] { ++count; });
    }
    void move(const char* from, const char* to) const {
        fs::rename(folder_.path(from), folder_.path(to));
    }
    // Waits until all changes so far are reported. The two later changes in another folder are
    // reported after them.
    void settle() {
        int count = 0;
        folder_.makeFolder("settle");
        const auto watcher = watch("settle", 0, count);
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
    const auto watcher = watch("store", 2, count_);
    for (const auto& [name, change] : cases) {
        SCOPED_TRACE(name);
        count_ = 0;
        change();
        ASSERT_TRUE(waitUntil([&] { return count_ > 0; }));
    }
}

TEST_F(FolderWatcherTest, AFolderMayComeGoAndComeBack) {
    const auto watcher = watch("container/data/Today", 1, count_);
    folder_.makeFolder("container/data");
    settle();
    EXPECT_EQ(count_, 0);
    const auto expectTold = [&](const char* what) {
        SCOPED_TRACE(what);
        EXPECT_TRUE(waitUntil([&] { return count_ > 0; }));
        count_ = 0;
    };
    folder_.makeFolder("container/data/Today/a@b");
    expectTold("made");
    move("container", "away");
    expectTold("moved with a folder above");
    folder_.writeFile("away/data/Today/a@b/2", "");
    settle();
    EXPECT_EQ(count_, 0);
    move("away", "container");
    expectTold("moved back");
    folder_.writeFile("container/data/Today/a@b/3", "");
    expectTold("written after it came back");
}

TEST_F(FolderWatcherTest, ChangesElsewhereAreNotToldAndManyInQuickSuccessionOnce) {
    folder_.makeFolder("store/Today/a@b/deep");
    const auto watcher = watch("store/Today", 1, count_);
    folder_.writeFile("store/other", "");
    folder_.writeFile("store/Today/a@b/deep/file", "");
    settle();
    EXPECT_EQ(count_, 0);
    for (int file = 0; file < 20; ++file) {
        folder_.writeFile("store/Today/" + std::to_string(file), "");
    }
    settle();
    EXPECT_EQ(count_, 1);
}

TEST_F(FolderWatcherTest, AFolderThatCannotBeWatchedIsLoggedOnce) {
    const LogCapture log;
    fs::create_symlink("loop", folder_.path("loop"));
    const auto watcher = watch("loop/store/Today", 0, count_);
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
    EXPECT_TRUE(waitUntil([&] { return count_ == 1; }));
    folder_.writeFile("store/file", "");
    settle();
    EXPECT_EQ(count_, 1);
}

}  // namespace
}  // namespace quillet::test
