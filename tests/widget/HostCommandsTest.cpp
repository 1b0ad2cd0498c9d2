// What the host application is asked, as docs/commands.md promises it to host authors.

#include <QApplication>
#include <gmock/gmock.h>

#include "tests/support/CalledActions.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RecordingApplication.h"
#include "tests/support/WaitUntil.h"
#include "widget/HostCommands.h"

namespace quillet::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::shared_ptr<ExtensionMessage> makeMessage(ExtensionMessage::Text account,
                                              ExtensionMessage::Text messageId) {
    auto message = ExtensionMessage::init();
    message->setAccount(account);
    message->setMessageId(messageId);
    message->setFolderStandardId(platform::Number(std::int64_t{1}));
    return message;
}

class HostCommandsTest : public testing::Test {
protected:
    EnvironmentVariable identifier_{"QUILLET_BUNDLE_IDENTIFIER", std::nullopt};
    RecordingApplication host_{QStringLiteral("it.tarno.quillet")};
    LogCapture log_;
};

TEST_F(HostCommandsTest, EveryDocumentedCommandArrivesAsItsExample) {
    ASSERT_TRUE(host_.isReachable());
    const auto rows = documentTable("commands.md", "Command");
    ASSERT_EQ(rows.size(), 4U);
    for (const auto& row : rows) {
        SCOPED_TRACE(row[0]);
        const std::size_t before = host_.requests().size();
        const bool background = row[2] == "yes";
        ASSERT_TRUE(ExtensionUtilities::LaunchCommandForMessages(
            {makeMessage("anna@example.com", "7.1@example.com")}, row[0], background));
        ASSERT_TRUE(waitUntil([&] { return host_.requests().size() > before; }));
        const auto& request = host_.requests().back();
        EXPECT_THAT(request.urls, ElementsAre(row[3]));
        EXPECT_EQ(request.platformData.value(QStringLiteral("x-quillet-background")).toBool(),
                  background);
        EXPECT_EQ(request.platformData.contains(QStringLiteral("activation-token")), !background);
        EXPECT_EQ(request.platformData.contains(QStringLiteral("desktop-startup-id")), !background);
    }
}

TEST_F(HostCommandsTest, TheHostIsAskedOnceForAllMessagesThatMakeAUrl) {
    ASSERT_TRUE(host_.isReachable());
    std::vector<std::size_t> requestsWhenAnnounced;
    const CalledActions actions([&] { requestsWhenAnnounced.push_back(host_.requests().size()); });
    auto nameless = makeMessage(std::nullopt, std::nullopt);
    nameless->setFolderStandardId(std::nullopt);
    auto fraction = makeMessage("ä+b&c d", "id?a=1&b[e]#c%20d");
    fraction->setFolderStandardId(platform::Number(1.5));
    EXPECT_TRUE(ExtensionUtilities::LaunchCommandForMessages({makeMessage("a@x", "with blank"),
                                                              nameless,
                                                              makeMessage("a@x", "<1@x>"),
                                                              fraction,
                                                              makeMessage("a@x", "ä"),
                                                              makeMessage("a@x", "50%")},
                                                             "archive",
                                                             true));
    ASSERT_TRUE(waitUntil([&] { return !host_.requests().empty(); }));
    EXPECT_THAT(
        host_.requests().front().urls,
        ElementsAre("quillet://archive?mail=(null)&messageid=(null)&folderstandardid=(null)",
                    "quillet://archive?mail=%C3%A4%2Bb%26c%20d&"
                    "messageid=id?a=1&b[e]#c%20d&folderstandardid=1.5"));
    EXPECT_EQ(requestsWhenAnnounced, (std::vector<std::size_t>{0, 0}));
    EXPECT_FALSE(ExtensionUtilities::LaunchCommandForMessages({}, "archive", true));
    EXPECT_FALSE(ExtensionUtilities::LaunchCommandForMessages(
        {makeMessage("a@x", "with blank")}, "archive", true));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(HostCommandsTest, EveryLineOfWidgetsHasItsDocumentedHost) {
    const auto rows = documentTable("commands.md", "The widget's identifier begins with");
    ASSERT_EQ(rows.size(), 5U);
    const std::string otherwise = rows.back()[1];
    EXPECT_EQ(ExtensionUtilities::targetBundleIdentifier(std::nullopt), otherwise);
    for (const auto& [own, host] : {std::pair{"it.tarno.quillet.today", otherwise},
                                    {"it.tarno.quillet.beta9", otherwise},
                                    {"it.tarno.quillet.beta1", otherwise},
                                    {"", otherwise},
                                    {"it.tarno.quillet.beta10.today", rows[1][1]},
                                    {"it.tarno.quillet22", rows[3][1]}}) {
        EXPECT_EQ(ExtensionUtilities::targetBundleIdentifier(own), host) << own;
    }
    for (std::size_t row = 0; row + 1 < rows.size(); ++row) {
        EXPECT_EQ(ExtensionUtilities::targetBundleIdentifier(rows[row][0]), rows[row][1]);
    }
}

}  // namespace
}  // namespace quillet::test
