// The program itself, as a user calls it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "tests/host/Command.h"
#include "tests/support/OwnContainer.h"

namespace quillet::host {
namespace {

using test::Command;

class SampleHostProgram : public testing::Test, protected test::OwnContainer {
protected:
    test::EnvironmentVariable busVariable_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
};

TEST_F(SampleHostProgram, ExitStatusAndOutputTellWhatWasDone) {
    const std::string file = container.writeFile("file", "");
    const struct {
        std::string arguments;
        int status;
        std::string output;
    } cases[] = {
        {"write --verbose " + container.path("new/container"),
         0,
         "container/SharedData/Accounts.plist"},
        {"write --verbose " + container.path(), 0, "no session bus"},
        {"write " + file, 1, "Name a folder that you may write into."},
        {"write", 2, "needs a folder"},
        {"write a b", 2, "\"b\""},
        {"paint a", 2, "\"paint\""},
        {"write a --bundle-identifier", 2, "needs a value"},
        {"write a --container b", 2, "\"--container\""},
        {"run --verbose", 2, "\"--verbose\""},
        {"run --container=", 1, "container"},
        {"run --container " + container.path(), 1, "no session bus"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.arguments);
        Command command(QUILLET_SAMPLE_HOST " " + row.arguments);
        EXPECT_EQ(command.finish(), row.status);
        EXPECT_THAT(command.output(), testing::HasSubstr(row.output));
    }
    for (const char* made : {"new/container", "new/container/SharedData"}) {
        struct stat status {};
        EXPECT_EQ(::stat(container.path(made).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & ALLPERMS, 0700U) << "others can read the mail in " << made;
    }
    const std::string noFolder = "XDG_RUNTIME_DIR=" + file + " TMPDIR=" + file + " ";
    Command lockless(noFolder + QUILLET_SAMPLE_HOST " write " + container.path());
    EXPECT_EQ(lockless.finish(), 1);
    EXPECT_THAT(lockless.output(), testing::HasSubstr("XDG_RUNTIME_DIR"));
    EXPECT_THAT(lockless.output(), testing::Not(testing::HasSubstr("Name a folder")));
    Command quiet(QUILLET_SAMPLE_HOST " write " + container.path());
    quiet.finish();
    EXPECT_EQ(quiet.output(), "");
}

}  // namespace
}  // namespace quillet::host
