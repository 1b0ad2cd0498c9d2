#include <gtest/gtest.h>
#include <optional>
#include <regex>
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

std::string anchor(const std::string& target, const std::string& text) {
    return "<a href='" + target + "'>" + text + "</a>";
}

std::string anchor(const std::string& link) {
    return anchor(link, link);
}

// A field of the document's table; line ends are written "\\n" there.
Text fieldOf(const std::string& cell) {
    return cell == "(none)" ? Text() : std::regex_replace(cell, std::regex(R"(\\n)"), "\n");
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
    const std::pair<std::string, std::string> cases[] = {
        {"one " + a + ",\ntwo", "one " + anchor(a) + ",<br>two"},
        {a + " <" + b + ">", anchor(a) + " <" + anchor(b) + ">"},
        {"www.a.example, b@b.example", "www.a.example, b@b.example"},  // another absolute form
        {"www.a.example xhttp://www.a.example", "www.a.example x" + anchor("http://www.a.example")},
        {a + " x" + a + "y", anchor(a) + " x" + anchor(a) + "y"},
        {a + "\n" + a, twice + "<br>" + twice},
        // A link that begins another one nests in it, or hides it.
        {a + " " + a + "/b", anchor(a) + " " + anchor(a) + "/b"},
        {a + "/b " + a, anchor(anchor(a) + "/b", anchor(a) + "/b") + " " + anchor(a)},
    };
    for (const auto& [text, html] : cases) {
        const auto message = ExtensionMessage::init();
        message->setPlainBody(text);
        EXPECT_EQ(renderHtml(*message), html) << text;
    }
}

TEST(RenderHtml, RenderingAgainAddsTheImagesAgain) {
    const auto message = ExtensionMessage::init();
    message->setAttachments(Attachments{"/a"s});
    const std::string once = renderHtml(*message);
    EXPECT_EQ(renderHtml(*message), once + once);
}

}  // namespace
}  // namespace quillet::test
