#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handoff/MessageUrl.h"
#include "model/ExtensionAddress.h"
#include "platform/base/Exception.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/LogCapture.h"

namespace quillet::test {
namespace {

using namespace std::string_literals;
using platform::URL;
using testing::ElementsAre;
using testing::StartsWith;
using Text = ExtensionMessage::Text;
using Message = std::shared_ptr<ExtensionMessage>;

ExtensionMessage::Recipients recipients(std::initializer_list<Text> mails) {
    ExtensionMessage::Recipients list;
    for (const Text& mail : mails) {
        list.push_back(std::make_shared<ExtensionAddress>());
        list.back()->setMail(mail);
    }
    return list;
}

std::vector<std::string> paths(const Message& message) {
    std::vector<std::string> list;
    const ExtensionMessage::Attachments attachments = message->attachments().value();
    for (const std::any& path : attachments) {
        list.push_back(std::any_cast<std::string>(path));
    }
    return list;
}

Message read(const std::string& text) {
    return ExtensionMessageWithUrl(URL::URLWithString(text).value());
}

std::string urlOf(const Message& message, std::string_view command = "compose") {
    const std::optional<URL> url = queryUrl(*message, command);
    return url ? url->absoluteString() : "none";
}

TEST(MessageUrl, ExampleOfTheDocumentIsReadAndWritten) {
    std::string example = documentExample("drafts.md", "");
    ASSERT_TRUE(example.ends_with('\n'));
    example.pop_back();
    const Message message = read(example);
    const Text fields[] = {message->plainBody(),
                           message->htmlBody(),
                           message->subject(),
                           message->from(),
                           message->account(),
                           message->bccString(),
                           message->ccString(),
                           message->toString()};
    EXPECT_THAT(fields,
                ElementsAre("See attached: 50% + 1.",
                            "",
                            "Report \xE2\x82\xAC",
                            "anna@example.com",
                            "anna@example.com",
                            std::nullopt,
                            "carl@example.com;",
                            "ben@example.com;dora@example.com;"));
    EXPECT_EQ(paths(message), std::vector<std::string>{"/tmp/Q3 report.pdf"});
    message->setTo(recipients({"ben@example.com", "dora@example.com"}));
    message->setCc(recipients({"carl@example.com"}));
    EXPECT_EQ(urlOf(message), example);
}

TEST(MessageUrl, OnlyWhatADraftHasIsWrittenAfterACommandThatIsAHost) {
    const Message message = ExtensionMessage::init();
    EXPECT_EQ(urlOf(message), "quillet://compose?");
    for (const char* command : {"two words", "a/b", "a?b", "a#b", "a:1", "a@b", "%", "\xC3\xA9"}) {
        EXPECT_EQ(urlOf(message, command), "none") << command;
    }
    message->setToString("lost");
    message->setCc(recipients({}));
    message->setBcc(recipients({Text(), "a@x", ""}));
    message->setTo(std::optional<ExtensionMessage::Recipients>());
    EXPECT_EQ(urlOf(message, ""), "quillet://?bcc=%28null%29%3Ba%40x%3B%3B");
}

TEST(MessageUrl, AttachmentsThatCannotTravelLeaveAGap) {
    LogCapture log;
    const Message message = ExtensionMessage::init();
    const URL file = URL::fileURLWithPath("/c d");
    message->setAttachments(ExtensionMessage::Attachments{
        "/a b"s, file, 7, *URL::URLWithString("http://x/y"), "/\xFF"s, ""s});
    const std::string url = urlOf(message);
    EXPECT_EQ(url, "quillet://compose?attachment_0=%2Fa%20b&attachment_1=%2Fc%20d&attachment_5=");
    EXPECT_EQ(paths(read(url)), (std::vector<std::string>{"/a b", "/c d", ""}));
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("queryUrl /\xEF\xBF\xBD: ")));
}

TEST(MessageUrl, QueriesOfOtherWritersAreRead) {
    const std::tuple<const char*, Text, Text, std::vector<std::string>> cases[] = {
        {"quillet://x", {}, {}, {}},
        {"mailto:a@x?to=a&to=b", "b", {}, {}},
        {"?To=a&SUBJECT=b&attachment=c", {}, {}, {}},
        {"?to[]=a&subject=b+c=d#&to=e", "a", "b c", {}},
        {"?attachment_9=z&attachment_=a&attachment_9=b", {}, {}, {"b", "a"}},
    };
    for (const auto& [text, to, subject, attached] : cases) {
        SCOPED_TRACE(text);
        const Message message = read(text);
        EXPECT_EQ(message->toString(), to);
        EXPECT_EQ(message->subject(), subject);
        EXPECT_EQ(paths(message), attached);
        EXPECT_TRUE(message->to() && message->to()->empty());
        EXPECT_EQ(message->plainBody(), "");
    }
    EXPECT_THROW(read("quillet://x?to=%FF"), platform::Exception);
}

}  // namespace
}  // namespace quillet::test
