#include <filesystem>
#include <gmock/gmock.h>
#include <regex>
#include <tuple>
#include <unistd.h>

#include "handoff/LinkMarkup.h"
#include "handoff/MessageImage.h"
#include "handoff/MessageRendering.h"
#include "handoff/MessageUrl.h"
#include "model/ExtensionAddress.h"
#include "platform/base/Exception.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using namespace std::string_literals;
using platform::URL;
using testing::ElementsAre;
using testing::StartsWith;
using Text = ExtensionMessage::Text;
using Attachments = ExtensionMessage::Attachments;
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
    for (const std::any& path : Attachments(message->attachments().value())) {
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
    EXPECT_EQ(message->plainBody(), "See attached: 50% + 1.");
    EXPECT_EQ(message->subject(), "Report \xE2\x82\xAC");
    EXPECT_EQ(*message->from() + *message->account(), "anna@example.comanna@example.com");
    EXPECT_EQ(*message->toString() + *message->ccString(),
              "ben@example.com;dora@example.com;carl@example.com;");
    EXPECT_THAT(paths(message), ElementsAre("/tmp/Q3 report.pdf"));
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
    const LogCapture log;
    const Message message = ExtensionMessage::init();
    message->setAttachments(Attachments{"/a b"s,
                                        URL::fileURLWithPath("/c d"),
                                        7,
                                        *URL::URLWithString("http://x/y"),
                                        "/\xFF"s,
                                        ""s});
    const std::string url = urlOf(message);
    EXPECT_EQ(url, "quillet://compose?attachment_0=%2Fa%20b&attachment_1=%2Fc%20d&attachment_5=");
    EXPECT_THAT(paths(read(url)), ElementsAre("/a b", "/c d", ""));
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
        EXPECT_EQ(message->plainBody(), "");
    }
    EXPECT_EQ(read("?htmlBody=a")->htmlBody(), "a");
    EXPECT_EQ(read("?bcc=a")->bccString(), "a");
    EXPECT_THROW(read("quillet://x?to=%FF"), platform::Exception);
}

std::string anchor(const std::string& target, const std::string& text = {}) {
    return "<a href='" + target + "'>" + (text.empty() ? target : text) + "</a>";
}

// A draft of these fields, rendered.
std::string rendered(const Message& draft,
                     const Text& html,
                     const Text& plain,
                     const std::optional<Attachments>& attachments = {}) {
    draft->setHtmlBody(html);
    draft->setPlainBody(plain);
    draft->setAttachments(attachments);
    return renderHtml(*draft);
}

// A field of the document's table; line ends are written "\\n" there.
Text fieldOf(const std::string& cell) {
    return cell == "(none)" ? Text() : std::regex_replace(cell, std::regex(R"(\\n)"), "\n");
}

TEST(RenderHtml, BodiesAreRenderedAsTheDocumentTells) {
    const auto rows = documentTable("drafts.md", "HTML body");
    ASSERT_GE(rows.size(), 5U);
    for (const auto& row : rows) {
        const std::vector<std::string> files = itemsOfCell(row.at(2));
        EXPECT_EQ(rendered(ExtensionMessage::init(),
                           fieldOf(row[0]),
                           fieldOf(row[1]),
                           Attachments(files.begin(), files.end())),
                  row.at(3));
    }
}

TEST(RenderHtml, TheBodyThatIsThereIsRenderedAndWrittenBackIntoItsField) {
    const Attachments files{"/a \"b\".pdf"s, 7, URL::fileURLWithPath("/c d"), "e"s};
    const std::string html =
        "<p><img src=\"file:///a \"b\".pdf\"/><br/><img src=\"file:///c d\"/><br/>"
        "<img src=\"file://e\"/><br/>";
    const std::tuple<Text, Text, std::string, Text, Text> cases[] = {
        {"<p>", "a\n", html, html, "a\n"},
        {"", "a\n", "a<br>", "", "a<br>"},
        {{}, "a\r\n\n<b>&", "a\r<br><br><b>&", {}, "a\r<br><br><b>&"},
        {{}, "", "", {}, ""},
    };
    for (const auto& [htmlBefore, plainBefore, result, htmlAfter, plainAfter] : cases) {
        const Message draft = ExtensionMessage::init();
        EXPECT_EQ(rendered(draft, htmlBefore, plainBefore, files), result);
        EXPECT_EQ(draft->htmlBody(), htmlAfter);
        EXPECT_EQ(draft->plainBody(), plainAfter);
    }
    const Message draft = ExtensionMessage::init();
    EXPECT_EQ(rendered(draft, "<p>", {}), "<p>") << "no list of attachments";
    rendered(draft, "<p>", {}, files);
    EXPECT_EQ(renderHtml(*draft), html + html.substr(3)) << "rendering again adds the images again";
}

TEST(RenderHtml, LinksAreReplacedWhereTheirAbsoluteFormStandsInTheText) {
    const std::string a = "http://a.example";
    const std::string b = "mailto:b@b.example";
    // The second pass replaces the link within the anchor of the first.
    const std::string twice = anchor(anchor(a), anchor(a));
    const std::pair<std::string, std::string> cases[] = {
        {a + " <" + b + ">,\ntwo", anchor(a) + " <" + anchor(b) + ">,<br>two"},
        {"www.a.example, b@b.example", "www.a.example, b@b.example"},  // another absolute form
        {"www.a.example xhttp://www.a.example", "www.a.example x" + anchor("http://www.a.example")},
        {a + " x" + a + "y", anchor(a) + " x" + anchor(a) + "y"},
        {a + "\n" + a, twice + "<br>" + twice},
        // A link that begins another one nests in it, or hides it.
        {a + " " + a + "/b", anchor(a) + " " + anchor(a) + "/b"},
        {a + "/b " + a, anchor(anchor(a) + "/b", anchor(a) + "/b") + " " + anchor(a)},
    };
    for (const auto& [text, html] : cases) {
        EXPECT_EQ(rendered(ExtensionMessage::init(), {}, text), html) << text;
    }
}

TEST(LinkMarkup, AReplacementThatWouldAddMoreThanTheLimitIsLeftOutAndTheNextOnesAreMade) {
    const std::string a = "http://a.example";
    const std::string b = "http://b.example";
    const std::size_t added = anchor(a).size() - a.size();
    const std::pair<std::size_t, std::string> cases[] = {
        {added - 1, a + " " + b},
        {added, anchor(a) + " " + b},
        {2 * added, anchor(a) + " " + anchor(b)},
        {3 * added, anchor(anchor(a), anchor(a)) + " " + b},
    };
    for (const auto& [most, html] : cases) {
        EXPECT_EQ(markUpLinks(a + " " + b, {a, a, b}, most), html) << most;
    }
}

// Without a limit, each of these fills the memory or takes hours.
TEST(LinkMarkup, HostileLinksAddNoMoreThanTheLimitAndEnd) {
    constexpr std::size_t kMost = 100'000;
    std::vector<std::string> nested;
    std::vector<std::string> different;
    std::string period;
    for (std::size_t i = 60'000; i > 0; --i) {
        different.push_back("http://a" + std::to_string(100'000 + i));
        period += "http://a/";
    }
    for (std::size_t i = 1'000; i > 0; --i) {
        nested.push_back("http://a.b/" + std::string(i, '/') + "c");
    }
    const std::pair<std::vector<std::string>, bool> cases[] = {
        {std::vector<std::string>(1'000, "http://a.b"), true},
        {nested, true},
        {different, true},
        {{period + period, period + "b"}, false},
    };
    for (const auto& [links, isMarkedUp] : cases) {  // at least in part
        std::string text;
        for (const std::string& link : links) {
            text += link + " ";
        }
        const std::string html = markUpLinks(text, links, kMost + text.size());
        EXPECT_LE(html.size(), 2 * text.size() + kMost);
        EXPECT_EQ(html.size() > text.size() + kMost / 4, isMarkedUp);
    }
}

TEST(MessageImage, MessagesOfTheSameNumbersShareAFileAndTheLaterSaveWins) {
    const TemporaryFolder folder;
    const EnvironmentVariable temporary("TMPDIR", folder.path());
    const std::string user = folder.path("quillet-" + std::to_string(::geteuid()));
    const auto message = ExtensionMessage::init();
    message->setAcc_idx(UINT64_MAX);
    message->setIdx(15);
    save_image(*message, std::string(100'000, '\0'));
    save_image(*message, "later");
    EXPECT_EQ(img_path(*message), user + "/TodayImages/18446744073709551615_15");
    EXPECT_EQ(contentsOf(img_path(*message)), "later");
    EXPECT_FALSE(get_image(*message));

    std::filesystem::remove_all(user);
    folder.makeFolder("elsewhere");
    std::filesystem::create_symlink("elsewhere", user);
    save_image(*message, "data");
    EXPECT_EQ(img_path(*message), "") << "a folder that is not the user's own";
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("elsewhere")));
}

}  // namespace
}  // namespace quillet::test
