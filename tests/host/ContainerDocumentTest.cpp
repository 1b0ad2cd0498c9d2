// Runs the example of docs/container.md, which host authors paste into their programs.

#include <chrono>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <thread>

#include "model/ExtensionMessage.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/plist/PropertyList.h"
#include "tests/host/Command.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::host {
namespace {

using platform::PropertyListDocument;
using test::Command;
using test::contentsOf;
using test::documentExample;
using test::EnvironmentVariable;
using test::TemporaryFolder;

// Whether the folder of the session can be used for locks.
class ContainerDocument : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(, ContainerDocument, testing::Bool());

TEST_P(ContainerDocument, ExampleWritesAFileAfterTheReaderIsDone) {
    const TemporaryFolder container;
    const TemporaryFolder runtime;
    ASSERT_EQ(::chmod(runtime.path().c_str(), GetParam() ? 0700 : 0755), 0);
    const EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
    const EnvironmentVariable temporaryVariable{"TMPDIR", runtime.path()};
    const std::string example = documentExample("container.md", "python");
    ASSERT_NE(example, "");
    const std::string script = container.writeFile("host.py", example);
    const std::string dataFolder = container.makeFolder("SharedData");
    const std::string written = dataFolder + "/Today/anna@example.com/INBOX.plist";

    const platform::FileCoordinator coordinator(dataFolder);
    std::unique_ptr<Command> host;
    const auto error = coordinator.coordinateReading(dataFolder + "/Today", [&](const auto&) {
        host = std::make_unique<Command>("exec python3 " + script + " " + dataFolder);
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!test::somebodyWaitsForToday(runtime.path()) &&
               std::chrono::steady_clock::now() < limit) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        EXPECT_TRUE(test::somebodyWaitsForToday(runtime.path()))
            << "the example takes another lock, or none";
        EXPECT_FALSE(platform::FileManager::fileExists(written));
    });
    ASSERT_FALSE(error) << error->description();
    EXPECT_EQ(host->finish(), 0) << host->output();

    PropertyListDocument document;
    const auto failure = document.parse(contentsOf(written));
    ASSERT_FALSE(failure) << failure->description();
    EXPECT_TRUE(document.root().valueForKey("folder"));
    EXPECT_TRUE(document.root().valueForKey("account"));
    const auto message =
        ExtensionMessage::initWithDictonary(*document.root().valueForKey("data").begin());
    EXPECT_EQ(message->account(), "anna@example.com");
    EXPECT_EQ(message->folderStandardId()->text(), "1");
    EXPECT_EQ(message->messageId(), "1@example.com");
    EXPECT_EQ(document.root().valueForKey("data").count(), 1U) << "the second was not taken out";
}

}  // namespace
}  // namespace quillet::host
