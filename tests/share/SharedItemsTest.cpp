#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <gtest/gtest.h>

#include "share/SharedItems.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::ExtensionItem;
using platform::Item;
using platform::Result;
using platform::URL;

std::string itemText(const Item& item) {
    if (const auto* url = std::get_if<URL>(&item)) {
        return url->isFileURL() ? "file " + url->path() : "link " + url->absoluteString();
    }
    return std::holds_alternative<std::string>(item) ? "image data" : "image";
}

// What an item is, in words.
std::string textOf(const Result<ExtensionItem>& item) {
    if (!item) {
        return "error " + item.error().text;
    }
    if (const auto& text = item.value().attributedContentText) {
        return text->html ? "html " + *text->html : "text " + text->string;
    }
    std::string result;
    for (const std::string_view type : {platform::kUTTypeURL, platform::kUTTypeImage}) {
        item.value().attachments.at(0)->loadItem(type, [&](const Result<Item>& loaded) {
            result += loaded ? itemText(loaded.value()) : "";
        });
    }
    return result;
}

TEST(SharedItems, AWordIsAFileOrALink) {
    const TemporaryFolder folder;
    const std::string file = folder.writeFile("50% (1)", "");
    const std::string badName = folder.writeFile("\xFF", "");
    const std::pair<std::string, std::string> cases[] = {
        {file, "file " + file},
        {URL::fileURLWithPath(file).absoluteString(), "file " + file},
        {"https://x.example/a?b=c#d.", "link https://x.example/a?b=c#d."},
        {"www.x.example", "link http://www.x.example"},
        {"https://x.example/\u00E4", "link https://x.example/%C3%A4"},
        {"mailto:a@x.example", "link mailto:a@x.example"},
        {"javascript:alert(1)", "error \"javascript:alert(1)\" is neither a file nor a web link"},
        {"see https://x.example",
         "error \"see https://x.example\" is neither a file nor a web link"},
        {"", "error \"\" is neither a file nor a web link"},
        {"file:///no/such", "error there is no file /no/such"},
        {folder.path(), "error " + folder.path() + " is a folder; only files can be shared"},
        {badName, "error the name of " + badName + " is not UTF-8; rename the file"},
    };
    for (const auto& [word, expected] : cases) {
        EXPECT_EQ(textOf(itemOfWord(word)), expected);
    }
}

TEST(SharedItems, BytesAreTakenByTheirContentOrAsTold) {
    const std::string gif("GIF89a\1\0\1\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\1D\0;", 26);
    const struct {
        std::string bytes;
        TextKind kind;
        std::string expected;
    } cases[] = {
        {"a < b\n", TextKind::ByContent, "text a < b"},
        {" <p>a</p>", TextKind::ByContent, "html  <p>a</p>"},
        {"press <b>\nthen c", TextKind::ByContent, "text press <b>\nthen c"},
        {"<anna@x.example>",
         TextKind::ByContent,
         "html &lt;<a href=\"mailto:anna@x.example\">anna@x.example</a>&gt;"},
        {"<!DOCTYPE html>\n<html>", TextKind::ByContent, "html <!DOCTYPE html>\n<html>"},
        {"<p>a</p>", TextKind::Plain, "text <p>a</p>"},
        {"www.x.example", TextKind::Plain, "text www.x.example"},
        {"www.x.example", TextKind::Html, "html www.x.example"},
        {"a", TextKind::Html, "html a"},
        {"\xEF\xBB\xBFZo\u00EB", TextKind::ByContent, "text Zo\u00EB"},
        {std::string("\xFF\xFEx\0\xEB\0", 6), TextKind::ByContent, "text x\u00EB"},
        {"Zo\xEB", TextKind::ByContent, "text Zo\u00EB"},
        {"P1 is broken", TextKind::ByContent, "text P1 is broken"},
        {gif, TextKind::ByContent, "image data"},
        {gif, TextKind::Plain, "error the input is neither a text nor a picture"},
        {std::string("a\0b", 3),
         TextKind::ByContent,
         "error the input is neither a text nor a picture"},
        {" \n", TextKind::ByContent, "error the input is empty"},
        {"", TextKind::Html, "error the input is empty"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(textOf(itemOfBytes(row.bytes, row.kind, "the input")), row.expected);
    }
}

TEST(SharedItems, ClipboardGivesItsRichestItemOrTheTextAskedFor) {
    const auto shared = [](TextKind kind) {
        std::string result;
        for (const auto& item : itemsOfClipboard(kind)) {
            result += textOf(item) + "; ";
        }
        return result;
    };
    auto* data = new QMimeData;  // the clipboard's from then on
    QGuiApplication::clipboard()->setMimeData(data);
    EXPECT_EQ(shared(TextKind::ByContent), "");
    data->setText(QStringLiteral("plain"));
    EXPECT_EQ(shared(TextKind::ByContent), "text plain; ");
    data->setHtml(QStringLiteral("<i>rich</i>"));
    EXPECT_EQ(shared(TextKind::ByContent), "html <i>rich</i>; ");
    data->setImageData(QImage(3, 1, QImage::Format_RGB888));
    EXPECT_EQ(shared(TextKind::ByContent), "image; ");
    data->setData(QStringLiteral("text/uri-list"), "# two\r\nfile:///etc/hosts\r\na:b\r\n");
    EXPECT_EQ(shared(TextKind::ByContent),
              "file /etc/hosts; error \"a:b\" is neither a file nor a web link; ");
    EXPECT_EQ(shared(TextKind::Html), "html <i>rich</i>; ");
    EXPECT_EQ(shared(TextKind::Plain), "text plain; ");
}

}  // namespace
}  // namespace quillet::test
