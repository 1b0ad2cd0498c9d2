#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "handoff/MessageImage.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

std::shared_ptr<ExtensionMessage> messageOf(std::uint64_t account, std::uint64_t number) {
    auto message = ExtensionMessage::init();
    message->setAcc_idx(account);
    message->setIdx(number);
    return message;
}

class MessageImage : public testing::Test {
protected:
    std::string userFolder() const {
        return folder_.path("quillet-" + std::to_string(::geteuid()));
    }

    TemporaryFolder folder_;
    EnvironmentVariable temporary_{"TMPDIR", folder_.path()};
};

TEST_F(MessageImage, MessagesOfTheSameNumbersShareAFileAndTheLaterSaveWins) {
    const std::string first(100'000, '\0');
    save_image(*messageOf(2, 15), first);
    EXPECT_EQ(img_path(*messageOf(2, 15)), userFolder() + "/TodayImages/2_15");
    EXPECT_EQ(contentsOf(userFolder() + "/TodayImages/2_15"), first);
    save_image(*messageOf(2, 15), "later");
    save_image(*messageOf(UINT64_MAX, 0), "other");
    EXPECT_EQ(contentsOf(img_path(*messageOf(2, 15))), "later");
    EXPECT_EQ(contentsOf(userFolder() + "/TodayImages/18446744073709551615_0"), "other");
    const std::filesystem::directory_iterator files(userFolder() + "/TodayImages");
    EXPECT_EQ(std::distance(begin(files), end(files)), 2);
}

TEST_F(MessageImage, NothingIsReadBackEvenAfterASave) {
    save_image(*messageOf(1, 1), "data");
    EXPECT_FALSE(get_image(*messageOf(1, 1)));
}

TEST_F(MessageImage, NothingIsWrittenThroughAFolderThatIsNotTheUsersOwn) {
    folder_.makeFolder("elsewhere");
    ASSERT_EQ(::symlink("elsewhere", userFolder().c_str()), 0);
    save_image(*messageOf(1, 1), "data");
    EXPECT_EQ(img_path(*messageOf(1, 1)), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path("elsewhere")));
}

}  // namespace
}  // namespace quillet::test
