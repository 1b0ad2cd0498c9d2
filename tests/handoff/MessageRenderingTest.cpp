#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "handoff/MessageRendering.h"
#include "platform/url/URL.h"
#include "tests/support/DocumentTable.h"

namespace quillet::test {
namespace {

using Text = ExtensionMessage::Text;
using Attachments = ExtensionMessage::Attachments;
using platform::URL;
using namespace std::string_literals;

std::shared_ptr<ExtensionMessage> plainMessage(const std::string& text) {
    auto message = ExtensionMessage::init();
    message->setPlainBody(text);
    return message;
}

std::string anchor(const std::string& target, const std::string& text) {
    return "<a href='" + target + "'>" + text + "</a>";
}

std::string anchor(const std::string& link) {
    return anchor(link, link);
}

// A field of the document's table; line ends are written "\\n" there.
Text fieldOf(std::string cell) {
    if (cell == "(none)") {
        return std::nullopt;
    }
    for (std::size_t at = cell.find("\\n"); at != std::string::npos; at = cell.find("\\n", at)) {
        cell.replace(at, 2, "\n");
    }
    return cell;
}

TEST(RenderHtml, BodiesAreRenderedAsTheDocumentTells) {
    const auto rows = documentTable("drafts.md", "HTML body");
    ASSERT_GE(rows.size(), 5U);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4U);
        SCOPED_TRACE(row[3]);
        const auto message = ExtensionMessage::init();
        message->setHtmlBody(fieldOf(row[0]));
        message->setPlainBody(fieldOf(row[1]));
        const std::vector<std::string> paths = itemsOfCell(row[2]);
        message->setAttachments(Attachments(paths.begin(), paths.end()));
        EXPECT_EQ(renderHtml(*message), row[3]);
    }
}

TEST(RenderHtml, TheBodyThatIsThereIsRenderedAndWrittenBackIntoItsField) {
    const Attachments two{"/a \"b\".pdf"s, 7, URL::fileURLWithPath("/c d"), "e"s};
    const std::string images =
        "<img src=\"file:///a \"b\".pdf\"/><br/><img src=\"file:///c d\"/><br/>"
        "<img src=\"file://e\"/><br/>";
    const struct {
        const char* name;
        Text html, plain;
        std::optional<Attachments> attachments;
        std::string result;
        Text htmlAfter, plainAfter;
    } cases[] = {
        {"html", "<p>", "a\n", two, "<p>" + images, "<p>" + images, "a\n"},
        {"html alone", "<p>", {}, std::nullopt, "<p>", "<p>", {}},
        {"both empty", "", "", std::nullopt, "", "", ""},
        {"empty html beside a plain body", "", "a\n", two, "a<br>", "", "a<br>"},
        {"plain", {}, "a\r\n\n<b>&", two, "a\r<br><br><b>&", {}, "a\r<br><br><b>&"},
        {"empty plain", {}, "", two, "", {}, ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const auto message = ExtensionMessage::init();
        message->setHtmlBody(row.html);
        message->setPlainBody(row.plain);
        message->setAttachments(row.attachments);
        EXPECT_EQ(renderHtml(*message), row.result);
        EXPECT_EQ(message->htmlBody(), row.htmlAfter);
        EXPECT_EQ(message->plainBody(), row.plainAfter);
    }
}

TEST(RenderHtml, LinksAreReplacedWhereTheirAbsoluteFormStandsInTheText) {
    const std::string a = "http://a.example";
    const std::string b = "mailto:b@b.example";
    // The second pass replaces the link within the anchor of the first.
    const std::string twice = anchor(anchor(a), anchor(a));
    const struct {
        const char* name;
        std::string text;
        std::string html;
    } cases[] = {
        {"two lines", "one " + a + ",\ntwo", "one " + anchor(a) + ",<br>two"},
        {"several", a + " <" + b + ">", anchor(a) + " <" + anchor(b) + ">"},
        {"other absolute form", "www.a.example, b@b.example", "www.a.example, b@b.example"},
        {"absolute form elsewhere",
         "www.c.example xhttp://www.c.example",
         "www.c.example x" + anchor("http://www.c.example")},
        {"inside of a word", a + " x" + a + "y", anchor(a) + " x" + anchor(a) + "y"},
        {"the same twice nests", a + "\n" + a, twice + "<br>" + twice},
        {"a prefix of a later one nests and hides that one",
         a + " " + a + "/b",
         anchor(a) + " " + anchor(a) + "/b"},
        {"a prefix of an earlier one nests",
         a + "/b " + a,
         anchor(anchor(a) + "/b", anchor(a) + "/b") + " " + anchor(a)},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(renderHtml(*plainMessage(row.text)), row.html);
    }
}

TEST(RenderHtml, RenderingAgainAddsTheImagesAndTheAnchorsAgain) {
    const auto html = ExtensionMessage::init();
    html->setAttachments(Attachments{"/a"s});
    const std::string once = renderHtml(*html);
    EXPECT_EQ(renderHtml(*html), once + once);

    const auto plain = plainMessage("http://a.example");
    const std::string first = renderHtml(*plain);
    EXPECT_GT(renderHtml(*plain).size(), first.size());
}

TEST(SearchUrlsDetector, AbsoluteUrlsStandInTextOrderOncePerTimeThatTheyAreFound) {
    const auto message = plainMessage("http://other.example");
    EXPECT_THAT(
        searchUrlsDetector(*message, "www.b.example c@d.example www.b.example"),
        testing::ElementsAre("http://www.b.example", "mailto:c@d.example", "http://www.b.example"));
    EXPECT_THAT(searchUrlsDetector(*message, ""), testing::IsEmpty());
}

}  // namespace
}  // namespace quillet::test
