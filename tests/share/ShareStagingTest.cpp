#include <gmock/gmock.h>

#include "share/StagingWord.h"

#include "tests/handoff/ContainerFixture.h"

namespace quillet::test {

using StagingWordTest = ContainerFixture;

TEST_F(StagingWordTest, FoldersOfSharesGoAfterADayAndNothingElseGoes) {
    constexpr std::chrono::seconds kNow{1'000'000};
    for (const char* name : {"Share-913599-22", "Share-913601-1", "Share-x-1", "Today"}) {
        container.writeFile(std::string("SharedData/") + name + "/file", "");
    }
    const std::string word = newStagingWord(std::chrono::system_clock::time_point(kNow));
    EXPECT_THAT(platform::FileManager::contentsOfFolder(container.path("SharedData")).value(),
                testing::UnorderedElementsAre("Share-913601-1", "Share-x-1", "Today", word));
}

}  // namespace quillet::test
