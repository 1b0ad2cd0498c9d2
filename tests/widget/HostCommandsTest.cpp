// What the host application is asked, as docs/commands.md promises it to host authors.

#include <gmock/gmock.h>

#include "tests/support/CalledActions.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingApplication.h"
#include "widget/HostCommands.h"

namespace quillet::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ExtensionUtilities::LaunchCommandForMessages;

std::shared_ptr<ExtensionMessage> makeMessage(
    ExtensionMessage::Text account,
    ExtensionMessage::Text messageId,
    std::optional<platform::Number> folder = platform::Number(std::int64_t{1})) {
    auto message = ExtensionMessage::init();
    message->setAccount(account);
    message->setMessageId(messageId);
    message->setFolderStandardId(folder);
    return message;
}

class HostCommandsTest : public testing::Test {
protected:
    EnvironmentVariable identifier_{"QUILLET_BUNDLE_IDENTIFIER", std::nullopt};
    RecordingApplication host_{"it.tarno.quillet"};
    LogCapture log_;
    std::size_t asked_ = 0;
};

TEST_F(HostCommandsTest, EveryDocumentedCommandArrivesAsItsExample) {
    const auto rows = documentTable("commands.md", "Command");
    ASSERT_EQ(rows.size(), 4U);
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        const bool background = row[2] == "yes";
        EXPECT_TRUE(LaunchCommandForMessages(
            {makeMessage("anna@example.com", "7.1@example.com")}, row[0], background));
        ASSERT_TRUE(host_.gets(++asked_));
        const auto& [urls, data] = host_.requests().back();
        EXPECT_THAT(urls, ElementsAre(row[3]));
        EXPECT_EQ(data.value("x-quillet-background").toBool(), background);
        EXPECT_EQ(data.contains("activation-token"), !background);
        EXPECT_EQ(data.contains("desktop-startup-id"), !background);
    }
}

TEST_F(HostCommandsTest, TheHostIsAskedOnceForAllMessagesThatMakeAUrl) {
    std::vector<std::size_t> requestsWhenAnnounced;
    const CalledActions actions([&] { requestsWhenAnnounced.push_back(host_.requests().size()); });
    const auto noUrl = makeMessage("a@x", "with blank");
    EXPECT_FALSE(LaunchCommandForMessages({}, "archive", true));
    EXPECT_FALSE(LaunchCommandForMessages({noUrl}, "archive", true));
    const auto nameless = makeMessage(std::nullopt, std::nullopt, std::nullopt);
    const auto odd = makeMessage("\u00E4+b&c d", "id?a=1&b[e]#c%20d", platform::Number(1.5));
    EXPECT_TRUE(LaunchCommandForMessages(
        {noUrl, nameless, makeMessage("a@x", "50%"), odd, noUrl}, "archive", true));
    ASSERT_TRUE(host_.gets(1));
    EXPECT_THAT(
        host_.requests().front().urls,
        ElementsAre("quillet://archive?mail=(null)&messageid=(null)&folderstandardid=(null)",
                    "quillet://archive?mail=%C3%A4%2Bb%26c%20d&"
                    "messageid=id?a=1&b[e]#c%20d&folderstandardid=1.5"));
    EXPECT_THAT(requestsWhenAnnounced, ElementsAre(0, 0));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(HostCommandsTest, EveryLineOfWidgetsHasItsDocumentedHost) {
    const auto rows = documentTable("commands.md", "The widget's identifier begins with");
    ASSERT_EQ(rows.size(), 5U);
    const std::string otherwise = rows.back()[1];
    const auto hostOf = ExtensionUtilities::targetBundleIdentifier;
    EXPECT_EQ(hostOf(std::nullopt), otherwise);
    EXPECT_EQ(hostOf("it.tarno.quillet.today"), otherwise);
    EXPECT_EQ(hostOf("it.tarno.quillet.beta9"), otherwise);
    EXPECT_EQ(hostOf("it.tarno.quillet.beta1"), otherwise);
    EXPECT_EQ(hostOf("it.tarno.quillet.beta10.today"), rows[1][1]);
    EXPECT_EQ(hostOf("it.tarno.quillet22"), rows[3][1]);
    for (std::size_t row = 0; row + 1 < rows.size(); ++row) {
        EXPECT_EQ(hostOf(rows[row][0]), rows[row][1]);
    }
}

}  // namespace
}  // namespace quillet::test
