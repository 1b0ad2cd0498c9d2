#include <filesystem>
#include <gtest/gtest.h>
#include <unistd.h>

#include "handoff/MessageImage.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

TEST(MessageImage, MessagesOfTheSameNumbersShareAFileAndTheLaterSaveWins) {
    const TemporaryFolder folder;
    const EnvironmentVariable temporary("TMPDIR", folder.path());
    const std::string user = folder.path("quillet-" + std::to_string(::geteuid()));
    const auto message = ExtensionMessage::init();
    message->setAcc_idx(UINT64_MAX);
    message->setIdx(15);
    save_image(*message, std::string(100'000, '\0'));
    save_image(*message, "later");
    EXPECT_EQ(img_path(*message), user + "/TodayImages/18446744073709551615_15");
    EXPECT_EQ(contentsOf(img_path(*message)), "later");
    EXPECT_FALSE(get_image(*message));

    std::filesystem::remove_all(user);
    folder.makeFolder("elsewhere");
    std::filesystem::create_symlink("elsewhere", user);
    save_image(*message, "data");
    EXPECT_EQ(img_path(*message), "") << "a folder that is not the user's own";
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("elsewhere")));
}

}  // namespace
}  // namespace quillet::test
