#include <gtest/gtest.h>
#include <limits>
#include <sys/stat.h>

#include "platform/desktop/UserDefaults.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::UserDefaults;

class UserDefaultsTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    EnvironmentVariable config_{"XDG_CONFIG_HOME", folder_.path("config")};
    UserDefaults& defaults_ = UserDefaults::standard();
};

TEST_F(UserDefaultsTest, AValueIsKeptAndWhatAnotherProgramWritesIsSeen) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(defaults_.integerForKey("segmented"), 0);
    defaults_.setInteger(kLeast, "segmented");
    EXPECT_EQ(defaults_.integerForKey("segmented"), kLeast);
    const std::pair<std::string, std::int64_t> cases[] = {
        {"\"  12 monkeys\"", 12},
        {"99999999999999999999", std::numeric_limits<std::int64_t>::max()},
        {"1.9", 1},
        {"@ByteArray(5)", 5},
        {"@Variant(\\0\\0\\0\\xff)", 0},
    };
    for (const auto& [text, expected] : cases) {
        folder_.writeFile("config/quillet/today.ini",
                          "[General]\nother=1\nsegmented=" + text + "\n");
        EXPECT_EQ(defaults_.integerForKey("segmented"), expected) << text;
    }
    defaults_.setInteger(2, "segmented");
    EXPECT_EQ(defaults_.integerForKey("other"), 1);
}

TEST_F(UserDefaultsTest, AFileThatCannotBeWrittenLeavesTheValueToThisProcess) {
    folder_.writeFile("file", "");
    const std::string inPlace = folder_.makeFolder("fifo/quillet") + "/today.ini";
    const std::string ofLock = folder_.makeFolder("fifo lock/quillet") + "/today.ini.lock";
    ASSERT_TRUE(::mkfifo(inPlace.c_str(), 0600) == 0 && ::mkfifo(ofLock.c_str(), 0600) == 0);
    for (const char* place : {"file", "fifo", "fifo lock"}) {
        SCOPED_TRACE(place);
        const EnvironmentVariable config("XDG_CONFIG_HOME", folder_.path(place));
        EXPECT_EQ(defaults_.integerForKey("other"), 0);
        defaults_.setInteger(3, "unsaved");
        EXPECT_EQ(defaults_.integerForKey("unsaved"), 3);
    }
    EXPECT_EQ(defaults_.integerForKey("unsaved"), 3);
    defaults_.setInteger(4, "unsaved");  // the file can be written again and counts
    folder_.writeFile("config/quillet/today.ini", "[General]\nunsaved=15\n");
    EXPECT_EQ(defaults_.integerForKey("unsaved"), 15);
}

}  // namespace
}  // namespace quillet::test
