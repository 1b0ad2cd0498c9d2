#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>

#include "share/ShareStaging.h"

#include "tests/handoff/ContainerFixture.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr std::chrono::system_clock::time_point kNow{std::chrono::seconds(1'000'000)};

class ShareStagingTest : public ContainerFixture {
protected:
    // A folder that the program has made itself, renamed.
    void makeOwn(const std::string& name) const {
        std::filesystem::rename(ShareStaging::inOwnFolder({}).folder(), data + "/" + name);
    }
    std::vector<std::string> names() const {
        return platform::FileManager::contentsOfFolder(data).value();
    }

    std::string data = container.path("SharedData");
};

}  // namespace

TEST_F(ShareStagingTest, OnlyOwnFoldersGoAfterADayAndOneThatIsReadIsNotWaitedFor) {
    std::vector<std::string> kept{
        "Share-1-", "Share-1-2x", "Share-1-02", "Share--1-2", "Share-x-1"};
    kept.insert(kept.end(), {"Share-913599-23", "Share-913601-1"});
    std::ranges::for_each(kept, [this](const std::string& name) { makeOwn(name); });
    makeOwn("Share-913599-22");
    ShareStaging::inFolderOf("Share-913599-24");
    const CoordinatingProcess host(data, data + "/Share-913599-23", Access::Read);
    ASSERT_TRUE(waitUntil([&] { return host.isInside(); }));
    const ShareStaging staging = ShareStaging::inOwnFolder(kNow);
    kept.insert(kept.end(), {"Share-913599-24", staging.service()});
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(kept));
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(ShareStagingTest, AFolderThatOthersUseIsLeftToThem) {
    const ShareStaging staging = ShareStaging::inFolderOf("share");
    const std::string copy = container.writeFile("SharedData/share/copy", "");
    container.writeFile("SharedData/share/other", "");
    staging.abandon();
    staging.discard({copy});
    EXPECT_THAT(stagedNames(), ElementsAre("other"));
    container.makeFolder("SharedData/Today");
    ShareStaging::inFolderOf("Today").discard({});
    EXPECT_THAT(names(), UnorderedElementsAre("share", "Today"));
}

}  // namespace quillet::test
