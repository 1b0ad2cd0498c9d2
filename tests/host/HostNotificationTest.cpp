// That the widget hears of a change, from the sample host and from the command of
// docs/container.md.

#include <gtest/gtest.h>
#include <string>

#include "platform/desktop/DistributedNotificationCenter.h"
#include "tests/host/Command.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace quillet::host {
namespace {

using test::Command;
using test::EnvironmentVariable;
using test::TemporaryFolder;

class HostNotification : public testing::Test {
protected:
    HostNotification() {
        center_.addObserver(
            this, "k_today_widget_key", "k_today_widget_object", [this](const auto&, const auto&) {
                ++received_;
            });
    }
    ~HostNotification() override { center_.removeObserver(this); }

    void expectNotificationFrom(const std::string& line) {
        Command command(line);
        EXPECT_EQ(command.finish(), 0) << command.output();
        EXPECT_TRUE(test::waitUntil([this] { return received_ > 0; })) << command.output();
    }

    platform::DistributedNotificationCenter& center_ =
        platform::DistributedNotificationCenter::defaultCenter();
    int received_ = 0;
};

TEST_F(HostNotification, SampleHostTellsTheWidgetOfItsFiles) {
    const TemporaryFolder container;
    const TemporaryFolder runtime;
    const EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
    expectNotificationFrom(QUILLET_SAMPLE_HOST " write " + container.path());
}

TEST_F(HostNotification, CommandOfTheDocumentReachesTheWidget) {
    const std::string command = test::documentExample("container.md", "sh");
    ASSERT_NE(command, "");
    const TemporaryFolder folder;
    expectNotificationFrom("sh " + folder.writeFile("example.sh", command));
}

}  // namespace
}  // namespace quillet::host
