#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <gtest/gtest.h>
#include <tuple>

#include "share/SharedItems.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::ExtensionItem;
using platform::Item;
using platform::Result;
using platform::URL;

// Describes an item.
std::string textOf(const Result<ExtensionItem>& item) {
    if (!item) {
        return "error " + item.error().text;
    }
    if (const auto& text = item.value().attributedContentText) {
        return text->html ? "html " + *text->html : "text " + text->string;
    }
    std::string result = "image";
    const auto& attachment = item.value().attachments.at(0);
    attachment->loadItem(platform::kUTTypeURL, [&result](const Result<Item>& loaded) {
        if (const URL* url = loaded ? std::get_if<URL>(&loaded.value()) : nullptr) {
            result = url->isFileURL() ? "file " + url->path() : "link " + url->absoluteString();
        }
    });
    attachment->loadItem(platform::kUTTypeImage, [&result](const Result<Item>& loaded) {
        result += loaded && std::holds_alternative<std::string>(loaded.value()) ? " data" : "";
    });
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
        {"javascript:x", "error \"javascript:x\" is neither a file nor a web link"},
        {"see www.x.de", "error \"see www.x.de\" is neither a file nor a web link"},
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
    using enum TextKind;
    const std::string gif("GIF89a\1\0\1\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\1D\0;", 26);
    const std::string unusable = "error the input is neither a text nor a picture";
    const std::tuple<std::string, TextKind, std::string> cases[] = {
        {"a < b\n", ByContent, "text a < b"},
        {" <p>a</p>", ByContent, "html  <p>a</p>"},
        {"press <b>\nthen c", ByContent, "text press <b>\nthen c"},
        {"<a@x.example>", ByContent, "html &lt;<a href=\"mailto:a@x.example\">a@x.example</a>&gt;"},
        {"<!DOCTYPE html>\n<html>", ByContent, "html <!DOCTYPE html>\n<html>"},
        {"<p>a</p>", Plain, "text <p>a</p>"},
        {"www.x.example", Plain, "text www.x.example"},
        {"www.x.example", Html, "html www.x.example"},
        {"a", Html, "html a"},
        {"\xEF\xBB\xBFZo\u00EB", ByContent, "text Zo\u00EB"},
        {std::string("\xFF\xFEx\0\xEB\0", 6), ByContent, "text x\u00EB"},
        {"Zo\xEB", ByContent, "text Zo\u00EB"},
        {"P1 is broken", ByContent, "text P1 is broken"},
        {gif, ByContent, "image data"},
        {gif, Plain, unusable},
        {std::string("a\0b", 3), ByContent, unusable},
        {" \n", ByContent, "error the input is empty"},
        {"", Html, "error the input is empty"},
    };
    for (const auto& [bytes, kind, expected] : cases) {
        EXPECT_EQ(textOf(itemOfBytes(bytes, kind, "the input")), expected);
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
    auto* data = new QMimeData;  // the clipboard takes it over
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
