#include <QImage>
#include <QTextFrame>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/DraftBody.h"
#include "platform/desktop/PngEncoding.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::host {
namespace {

TEST(DraftBody, OnlyPicturesThatCameWithTheDraftAreShown) {
    const test::TemporaryFolder folder;
    const std::string png = platform::pngOfBitmap({2, 1, {1, 1, 1, 1, 1, 1, 1, 1}}).value();
    const std::string secret = "file://" + folder.writeFile("secret.png", png);
    Draft draft;
    for (const char* path : {"/d/a b#1%20.png", "/d/é.png", "/d/broken.png"}) {
        draft.attachments.push_back({path, DraftAttachment::State::Taken, 1, png});
        draft.body += "<img src=\"file://" + std::string(path) + "\"/>";
    }
    draft.attachments.back().picture = png.substr(0, 20);
    DraftBody body(draft);
    const struct {
        std::string address;
        int width;
    } rows[] = {
        {"file:///d/a b#1%20.png", 2},
        {"file:///d/é.png", 2},
        {"file:///d/broken.png", 1},
        {secret, 1},
        {secret.substr(7), 1},
        {"http://127.0.0.1:9/a.png", 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.address);
        const QUrl name = QUrl::fromEncoded(QByteArray::fromStdString(row.address));
        const auto picture =
            body.document()->resource(QTextDocument::ImageResource, name).value<QImage>();
        EXPECT_EQ(picture.width(), row.width);
    }
}

TEST(DraftBody, ABodyThatTakesTheToolkitVeryLongIsCutOrStaysAsItIsWritten) {
    const auto shown = [](const std::string& start, std::size_t times) {
        Draft draft;
        for (std::size_t time = 0; time < times; ++time) {
            draft.body += start;
        }
        draft.body += "x";
        const DraftBody body(draft);
        return body.toPlainText().trimmed() + (body.isCut() ? QStringLiteral("…") : QString());
    };
    EXPECT_EQ(shown("<b>", 900), QStringLiteral("x"));
    EXPECT_EQ(shown("<table><tr><td>", 100), QStringLiteral("x"));
    EXPECT_TRUE(
        shown("<table><tr><td>", 60'000).startsWith(QStringLiteral("<table><tr><td><table>")));
    EXPECT_EQ(shown("a ", 50'000),
              QStringLiteral("a ").repeated(32'768).trimmed() + QStringLiteral("…"));
    EXPECT_EQ(shown("<table><tr><td>x</td></tr></table>", 1'000).left(1), QStringLiteral("x"));
    for (const char* plain : {"<td rowspan='21'>",
                              "<TH x=1 COLSPAN = +99>",
                              "<td colspan=99999999999>",
                              "<td colspan=16 colspan=16 colspan=16 colspan=16>",
                              "<td colspan=&#57;&#57;>",
                              "<td c&#111;lspan=99>",
                              "<td 'colspan'=99>",
                              "<t&#100; colspan=99>"}) {
        EXPECT_EQ(shown(plain, 1), QString::fromUtf8(plain) + QLatin1Char('x'));
    }
    EXPECT_TRUE(shown("<td>", 1'001).startsWith(QStringLiteral("<td><td>")));
    // The toolkit never comes back from some tables whose tags are closed out of turn.
    EXPECT_EQ(shown("<table><tr><td>a<div></tr><p><td>", 1), QStringLiteral("a\nx"));
    Draft draft;
    draft.body = "<table><tr><td colspan=' 020 ' style='a:&quot;b&quot;'>a</td></tr></table>";
    EXPECT_EQ(DraftBody(draft).document()->rootFrame()->childFrames().size(), 1);
}

// What is answered with nothing at all the toolkit reads itself: a FIFO would hang the host.
TEST(DraftBody, NoOtherResourceIsLeftToTheToolkit) {
    const test::TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    Draft draft;
    draft.body = "<style>@import url(file://" + fifo + ");</style><img src=\"" + fifo + "\">x";
    DraftBody body(draft);
    const QUrl name = QUrl::fromLocalFile(QString::fromStdString(fifo));
    for (const int type : {QTextDocument::HtmlResource,
                           QTextDocument::ImageResource,
                           QTextDocument::StyleSheetResource,
                           QTextDocument::MarkdownResource,
                           QTextDocument::UserResource}) {
        EXPECT_TRUE(body.document()->resource(type, name).isValid()) << type;
    }
}

}  // namespace
}  // namespace quillet::host
