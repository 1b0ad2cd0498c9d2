#include <QBuffer>
#include <QImage>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTextBrowser>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "message/MessageFile.h"
#include "message/MessageWindow.h"
#include "message/Picture.h"

#include "platform/desktop/PngEncoding.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::message {
namespace {

std::string png() {
    return platform::pngOfBitmap({2, 1, {1, 1, 1, 1, 1, 1, 1, 1}}).value();
}

// A small file of a picture with twenty million pixels.
std::string bomb() {
    QImage image(5000, 4000, QImage::Format_Mono);
    image.fill(0);
    QBuffer file;
    file.open(QIODevice::WriteOnly);
    image.save(&file, "png");
    return file.data().toStdString();
}

struct Asked {
    std::vector<std::string> saved;
    std::vector<std::string> opened;
};

WindowActions recording(Asked& asked) {
    return {[](QWidget& /*parent*/, const QString& name) {
                return name == QStringLiteral("none") ? QString() : QStringLiteral("/d/") + name;
            },
            [&asked](const std::string& path, std::string_view content) {
                asked.saved.push_back(path + "=" + std::string(content));
                return std::optional<platform::Error>();
            },
            [&asked](const std::string& url) {
                asked.opened.push_back(url);
                return std::optional<platform::Error>();
            }};
}

// What is answered with nothing at all the toolkit reads itself: a FIFO would hang the window.
TEST(MessageWindow, ABodyLoadsNothingButThePicturesOfItsMessage) {
    const test::TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::string secret = folder.writeFile("secret.png", png());
    ParsedMessage message;
    message.attachments = {{"a", "image/png", png()}, {"b", "image/png", bomb()}};
    message.pictures = {{"a@x", 0}, {"b@x", 1}};
    message.html = "<style>@import url(file://" + fifo + ");p{background:url(" + fifo +
                   ")}</style><link rel=stylesheet href='" + fifo + "'><p>x<img src='" + fifo +
                   "'><img src='cid:a@x'><img src='cid:b@x'><table background='" + fifo +
                   "'><tr><td>y</table>";
    Asked asked;
    MessageWindow window(message, MessageWindow::Kind::Message, ShownForm::Whole, recording(asked));
    window.show();
    const QTextDocument& document = *window.findChild<QTextBrowser*>()->document();
    const std::pair<std::string, int> rows[] = {{"cid:a@x", 2},
                                                {"cid:b@x", 1},
                                                {"cid:c@x", 1},
                                                {secret, 1},
                                                {"file://" + secret, 1},
                                                {"http://127.0.0.1:9/a.png", 1}};
    for (const auto& [address, width] : rows) {
        const QUrl name(QString::fromStdString(address));
        EXPECT_EQ(document.resource(QTextDocument::ImageResource, name).value<QImage>().width(),
                  width)
            << address;
    }
    for (const int type : {1, 3, 4, 100}) {  // all others, and one of the user's
        EXPECT_TRUE(
            document.resource(type, QUrl::fromLocalFile(QString::fromStdString(fifo))).isValid());
    }
    EXPECT_TRUE(pictureFrom("<svg xmlns='http://www.w3.org/2000/svg'/>", 10).isNull());
    EXPECT_TRUE(pictureFrom(bomb(), 10).isNull());
}

TEST(MessageWindow, FilesAreSavedAndLinksOpenedOnlyWhereTheUserAsks) {
    ParsedMessage message = parseMessage("From: a@b\nSubject: s\nContent-Type: text/html\n\nx");
    message.attachments = {{"none", "a/b", "0"}, {"one", "a/b", "1"}};
    Asked asked;
    MessageWindow window(message, MessageWindow::Kind::Message, ShownForm::Whole, recording(asked));
    window.show();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("s"));
    auto* list = window.findChild<QListWidget*>();
    const auto buttons = window.findChildren<QPushButton*>();
    for (const int row : {0, 1}) {
        list->setCurrentRow(row);
        buttons.first()->click();
    }
    EXPECT_EQ(asked.saved, std::vector<std::string>{"/d/one=1"});
    auto* body = window.findChild<QTextBrowser*>();
    for (const char* link : {"https://a@b.example/x",
                             "file:///etc/passwd",
                             "javascript:x",
                             "#a",
                             "mailto:c@d?subject=x%26y&attach=/etc/passwd"}) {
        Q_EMIT body->anchorClicked(QUrl(QString::fromUtf8(link)));
    }
    buttons[1]->click();
    EXPECT_EQ(
        asked.opened,
        (std::vector<std::string>{
            "https://b.example/x", "mailto:c@d?subject=x%26y", "mailto:a@b?subject=Re%3A%20s"}));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_TRUE(test::waitUntil([&window] { return !window.isVisible(); }));
    const MessageWindow draft(message, MessageWindow::Kind::Draft, ShownForm::Whole, {});
    EXPECT_EQ(draft.findChildren<QPushButton*>().size(), 2);  // save and close
    EXPECT_TRUE(draft.windowTitle().startsWith(QStringLiteral("Draft")));
}

std::string repeated(std::size_t times, const std::string& text) {
    std::string all;
    for (std::size_t time = 0; time < times; ++time) {
        all += text;
    }
    return all;
}

// A plugin prints what the window of the real program shows, and closes it.
TEST(QuilletMessage, WhateverAMessageHoldsItIsShown) {
    const test::TemporaryFolder folder;
    const test::EnvironmentVariable plugins("QT_PLUGIN_PATH", QUILLET_TEST_PLUGINS);
    // A sanitizer would turn the fault of the process into an exit status.
    const test::EnvironmentVariable address("ASAN_OPTIONS", "handle_segv=0:detect_leaks=0");
    const char* const options = std::getenv("TSAN_OPTIONS");
    const test::EnvironmentVariable threads(
        "TSAN_OPTIONS", std::string(options == nullptr ? "" : options) + ":handle_segv=0");
    const test::EnvironmentVariable plugin("QT_QPA_GENERIC_PLUGINS", "windowreader");
    const std::string html = "Subject: s\nContent-Type: text/html\n\n<p>Hello</p>";
    const std::string text = "Subject: s\n\nHello ";
    const std::string asText = "Shown as plain text";
    const struct {
        const char* name;
        std::string message;
        std::string shown;
        bool isPlain;
    } rows[] = {
        {"plain", text, "Hello", false},
        {"html", html + "<table><tr><td>cell</table>", "cell", false},
        {"nested tables", html + repeated(200, "<table><tr><td>"), "Hello", true},
        {"wide spans",
         html + repeated(50, "<table><tr><td colspan=30000 rowspan=30000>x</table>"),
         "Hello",
         true},
        {"nested groups", "From: " + repeated(5'000'000, "a:") + "\n\nHello", "From: a:", true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto outcome =
            test::runProgram("quillet-message", {folder.writeFile("m", row.message)});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_NE(outcome.output.find(row.shown), std::string::npos) << outcome.output;
        EXPECT_EQ(outcome.output.find(asText) != std::string::npos, row.isPlain);
    }
}

TEST(QuilletMessage, AFileThatCannotBeReadIsOneLineAndAStatus) {
    const test::TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const std::vector<std::pair<std::vector<std::string>, int>> rows{
        {{"--draft"}, 2}, {{"a", "b"}, 2}, {{fifo}, 1}, {{folder.path()}, 1}, {{"/none"}, 1}};
    for (const auto& [arguments, status] : rows) {
        const auto outcome = test::runProgram("quillet-message", arguments);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.errors.find("quillet-message: "), 0U) << outcome.errors;
    }
}

}  // namespace
}  // namespace quillet::message
