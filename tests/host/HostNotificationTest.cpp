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

TEST(HostNotification, SampleHostAndCommandOfTheDocumentReachTheWidget) {
    const TemporaryFolder folder;
    const EnvironmentVariable runtime{"XDG_RUNTIME_DIR", folder.path()};
    const std::string example = test::documentExample("container.md", "sh");
    ASSERT_NE(example, "");
    int received = 0;
    auto& center = platform::DistributedNotificationCenter::defaultCenter();
    center.addObserver(
        &received, "k_today_widget_key", "k_today_widget_object", [&](const auto&, const auto&) {
            ++received;
        });
    for (const std::string& line : {QUILLET_SAMPLE_HOST " write " + folder.path("container"),
                                    "sh " + folder.writeFile("example.sh", example)}) {
        SCOPED_TRACE(line);
        received = 0;
        Command command(line);
        EXPECT_EQ(command.finish(), 0) << command.output();
        EXPECT_TRUE(test::waitUntil([&] { return received > 0; })) << command.output();
    }
    center.removeObserver(&received);
}

}  // namespace
}  // namespace quillet::host
