#include <cerrno>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

#include "mailhost/host/ContainerWriter.h"

#include "platform/files/FileCoordinator.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;
using Files = ContainerWriter::Files;

class ContainerWriterTest : public testing::Test {
protected:
    // Publishes as a host that was just started does. Returns the errno value, 0 on success.
    int publish(const Files& files, const std::set<std::string>& kept = {}) {
        ContainerWriter writer(data_, list_);
        const auto changes = writer.publish(files, kept);
        changed_ = changes ? changes.value().files.size() : 0;
        return changes ? 0 : static_cast<int>(changes.error().code);
    }
    std::map<std::string, std::string> contents() const {
        std::map<std::string, std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(data_)) {
            if (entry.is_regular_file()) {
                std::ifstream file(entry.path());
                found[fs::relative(entry.path(), data_)] =
                    std::string(std::istreambuf_iterator<char>(file), {});
            }
        }
        return found;
    }

    TemporaryFolder folder_;
    test::EnvironmentVariable runtime_{"XDG_RUNTIME_DIR", folder_.path()};
    std::string data_ = folder_.path("container/SharedData");
    std::string list_ = folder_.path("written");
    std::size_t changed_ = 0;
    const Files files_{{"Accounts.plist", "accounts"}, {"Today/a@b/1-INBOX.plist", "inbox"}};
};

TEST_F(ContainerWriterTest, TheContainerHoldsWhatIsPublishedAndNothingIsWrittenTwice) {
    ASSERT_EQ(publish(files_), 0);
    EXPECT_EQ(contents(), files_);
    EXPECT_EQ(fs::status(data_).permissions(), fs::perms::owner_all);
    const auto inboxTime = fs::last_write_time(data_ + "/Today/a@b/1-INBOX.plist");
    ASSERT_EQ(publish(files_), 0);
    EXPECT_EQ(changed_, 0U);
    const Files more{{"Accounts.plist", "2"}, {"Today/a@b/1-INBOX.plist", "inbox"}};
    ASSERT_EQ(publish(more), 0);
    EXPECT_EQ(changed_, 1U);
    EXPECT_EQ(contents(), more);
    EXPECT_EQ(fs::last_write_time(data_ + "/Today/a@b/1-INBOX.plist"), inboxTime);
    fs::remove_all(data_ + "/Today");
    ASSERT_EQ(publish(more), 0);
    EXPECT_EQ(contents(), more);
    ASSERT_EQ(publish({{"Accounts.plist", "2"}}, {"Today/a@b"}), 0);
    EXPECT_EQ(contents(), more);
    folder_.writeFile("container/SharedData/Today/other@host/store", "of another program");
    ASSERT_EQ(publish({{"Accounts.plist", "none"}}), 0);
    Files left{{"Accounts.plist", "none"}, {"Today/other@host/store", "of another program"}};
    EXPECT_EQ(contents(), left);
    EXPECT_FALSE(fs::exists(data_ + "/Today/a@b"));
    ASSERT_EQ(publish(files_), 0);
    folder_.writeFile("container/SharedData/Today/a@b/.hidden", "of another program");
    ASSERT_EQ(publish({{"Accounts.plist", "none"}}), 0);
    left["Today/a@b/.hidden"] = "of another program";
    EXPECT_EQ(contents(), left);
}

TEST_F(ContainerWriterTest, NothingOfAnotherProgramIsReplacedOrMixedWith) {
    const struct {
        const char* name;
        const char* file;
        bool isAfterOwn;  // the host published before
    } rows[] = {
        {"account list", "Accounts.plist", false},
        {"account list since", "Accounts.plist", true},
        {"messages since", "Today/a@b/1-INBOX.plist", true},
        {"account folder", "Today/a@b/store", false},
        {"account folder since", "Today/a@b/store", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(data_);
        fs::remove(list_);
        if (row.isAfterOwn) {
            ASSERT_EQ(publish(files_), 0);
        }
        folder_.writeFile(std::string("container/SharedData/") + row.file, "foreign");
        const auto before = contents();
        const Files next{{"Accounts.plist", "new"}, {"Today/a@b/1-INBOX.plist", "new"}};
        EXPECT_EQ(publish(next), EEXIST);
        EXPECT_EQ(publish(next), EEXIST);  // nor at the next try
        EXPECT_EQ(contents(), before);
    }
}

TEST_F(ContainerWriterTest, AReaderIsNotDisturbedAndNothingIsLostByAnEndInBetween) {
    ASSERT_EQ(publish(files_), 0);
    const Files next{{"Accounts.plist", "new"}, {"Today/a@b/1-INBOX.plist", "new"}};
    const platform::FileCoordinator reader(data_);
    reader.coordinateReading(data_ + "/Today", [&](const std::string& /*path*/) {
        EXPECT_EQ(publish(next), EWOULDBLOCK);
        EXPECT_EQ(contents(), files_);
    });
    reader.coordinateReading(data_ + "/Accounts.plist", [&](const std::string& /*path*/) {
        EXPECT_EQ(publish(next), EWOULDBLOCK);  // ended after a part
    });
    EXPECT_EQ(publish(files_), 0);
    EXPECT_EQ(contents(), files_);
    EXPECT_EQ(publish(next), 0);
    EXPECT_EQ(contents(), next);
}

}  // namespace
}  // namespace quillet::mailhost
