// The program itself, as a user calls it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "platform/foundation/FileManager.h"
#include "tests/host/Command.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::host {
namespace {

using test::Command;
using test::EnvironmentVariable;
using test::TemporaryFolder;
using testing::HasSubstr;

class SampleHostProgram : public testing::Test {
protected:
    int run(const std::string& arguments) {
        Command command(QUILLET_SAMPLE_HOST " " + arguments);
        const int status = command.finish();
        output_ = command.output();
        return status;
    }

    TemporaryFolder folder_;
    TemporaryFolder runtime_;
    EnvironmentVariable runtimeVariable_{"XDG_RUNTIME_DIR", runtime_.path()};
    EnvironmentVariable busVariable_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
    std::string output_;
};

TEST_F(SampleHostProgram, WritesSilentlyWithoutASessionBus) {
    EXPECT_EQ(run("write " + folder_.path("new/container")), 0);
    EXPECT_EQ(output_, "");
    EXPECT_TRUE(
        platform::FileManager::fileExists(folder_.path("new/container/SharedData/Accounts.plist")));
}

TEST_F(SampleHostProgram, VerboseRunNamesFilesAndSaysThatNobodyWasTold) {
    EXPECT_EQ(run("write --verbose " + folder_.path() +
                  " --bundle-identifier it.tarno.quillet.beta.today"),
              0);
    EXPECT_THAT(output_, HasSubstr(folder_.path("SharedDataBeta/Accounts.plist")));
    EXPECT_THAT(output_, HasSubstr("no session bus"));
}

TEST_F(SampleHostProgram, UnwritableFolderFailsWithAMessage) {
    const std::string file = folder_.writeFile("file", "");
    EXPECT_EQ(run("write " + file), 1);
    EXPECT_THAT(output_, HasSubstr(file));
    EXPECT_THAT(output_, HasSubstr("Name a folder that you may write into."));
}

TEST_F(SampleHostProgram, WrongUsageIsToldFromFailure) {
    for (const std::string arguments :
         {"", "write", "write a b", "paint a", "write --loud a", "write a --bundle-identifier"}) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(run(arguments), 2);
        EXPECT_THAT(output_, HasSubstr("Usage: quillet-sample-host write DIR"));
    }
    EXPECT_EQ(run("--help"), 0);
    EXPECT_THAT(output_, HasSubstr("Usage: quillet-sample-host write DIR"));
    EXPECT_EQ(run("--version"), 0);
    EXPECT_THAT(output_, testing::StartsWith("quillet-sample-host "));
}

}  // namespace
}  // namespace quillet::host
