// Runs the examples of docs/container.md, which host authors paste into their programs.

#include <QProcess>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "model/ExtensionMessage.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

constexpr int kExampleTime = 30'000;  // milliseconds

// A program that runs an example, with everything that it prints in one place.
class ExampleProcess : public QProcess {
public:
    ExampleProcess(const char* program, const std::vector<std::string>& arguments) {
        setProcessChannelMode(MergedChannels);
        QStringList words;
        for (const std::string& argument : arguments) {
            words.append(QString::fromStdString(argument));
        }
        start(QString::fromLatin1(program), words);
    }
    void expectSuccess() {
        EXPECT_TRUE(waitForFinished(kExampleTime));
        EXPECT_EQ(exitCode(), 0) << readAll().constData();
    }
};

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
    std::optional<ExampleProcess> host;
    const auto error = coordinator.coordinateReading(dataFolder + "/Today", [&](const auto&) {
        host.emplace("python3", std::vector{script, dataFolder});
        EXPECT_TRUE(waitUntil([&] { return somebodyWaitsForToday(runtime.path()); }, kExampleTime))
            << "the example takes another lock, or none";
        EXPECT_FALSE(platform::FileManager::fileExists(written));
    });
    ASSERT_FALSE(error) << error->description();
    host->expectSuccess();

    platform::PropertyListDocument document;
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

TEST(ContainerDocumentNotification, CommandReachesTheWidget) {
    const std::string example = documentExample("container.md", "sh");
    ASSERT_NE(example, "");
    int received = 0;
    auto& center = platform::DistributedNotificationCenter::defaultCenter();
    center.addObserver(
        &received, "k_today_widget_key", "k_today_widget_object", [&](const auto&, const auto&) {
            ++received;
        });
    ExampleProcess("sh", {"-c", example}).expectSuccess();
    EXPECT_TRUE(waitUntil([&] { return received > 0; }));
    center.removeObserver(&received);
}

}  // namespace
}  // namespace quillet::test
