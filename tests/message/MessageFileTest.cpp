#include <gtest/gtest.h>

#include "message/AttachmentName.h"
#include "message/BodyText.h"
#include "message/MessageFile.h"
#include "message/ReplyUrl.h"

namespace quillet::message {
namespace {

// What a test compares: the texts and the files of a message on one line.
std::string summaryOf(const ParsedMessage& message) {
    std::string summary = "[" + message.plain + "][" + message.html + "]";
    for (const Attachment& file : message.attachments) {
        summary += " " + file.name + "|" + file.type + "|" + file.content;
    }
    for (const auto& [identifier, place] : message.pictures) {
        summary += " " + identifier + "=" + std::to_string(place);
    }
    return summary + (message.isCut ? " cut" : "");
}

constexpr const char* kAlternative =
    "Content-Type: multipart/mixed; boundary=m\n\n--m\n"
    "Content-Type: multipart/related; boundary=r\n\n--r\n"
    "Content-Type: multipart/alternative; boundary=a\n\n"
    "--a\nContent-Type: text/plain\n\nplain\n"
    "--a\nContent-Type: text/html\n\n<b>html</b><img src='cid:p@x'>\n--a--\n"
    "--r\nContent-Type: image/png\nContent-ID: <p@x>\nContent-Transfer-Encoding: base64\n\nUE5H\n"
    "--r--\n"
    "--m\nContent-Type: application/pdf\n"
    "Content-Disposition: attachment; filename*=utf-8''..%2Fa%2FM%C3%A4rz.pdf\n\nPDF\n"
    "--m\nContent-Type: message/rfc822\n\nSubject: In/ner\n\ninner\n--m--\n";

TEST(MessageFile, EveryMessageBecomesItsTextsAndItsFiles) {
    const struct {
        const char* name;
        std::string file;
        std::string summary;
    } rows[] = {
        {"nothing", "", "[][]"},
        {"no header", "\nHello\n", "[Hello\n][]"},
        {"no body", "Subject: a\n", "[][]"},
        {"mbox line", "From a@b Mon\nSubject: a\n\nx", "[x][]"},
        {"line ends and controls", "\r\na\r\nb\rc\x01\td", "[a\nb\nc \td][]"},
        {"quoted printable",
         "Content-Type: text/plain; charset=iso-8859-1\n"
         "Content-Transfer-Encoding: quoted-printable\n\nK=F6ln=80=\n!",
         "[Köln€!][]"},
        {"broken base64", "Content-Transfer-Encoding: base64\n\nSGkh*#\nSGk", "[Hi!][]"},
        {"utf-8 without a charset", "\nKöln", "[Köln][]"},
        {"8-bit without a charset", "\nK\xF6ln", "[Köln][]"},
        {"wrong bytes", "Content-Type: text/plain; charset=utf-8\n\na\xFFz", "[a\uFFFDz][]"},
        {"unknown charset", "Content-Type: text/plain; charset=\"../x\"\n\nK\xF6", "[Kö][]"},
        {"shift-jis", "Content-Type: text/plain; charset=shift_jis\n\n\x93\xFA", "[日][]"},
        {"larger charset", "Content-Type: text/plain; charset=gb2312\n\n\x81\x40", "[丂][]"},
        {"mixed, related and alternative",
         kAlternative,
         "[plain][<b>html</b><img src='cid:p@x'>] picture.png|image/png|PNG "
         "März.pdf|application/pdf|PDF In_ner.eml|message/rfc822|Subject: In/ner\n\ninner p@x=0"},
        {"text after text",
         "Content-Type: multipart/mixed; boundary=m\n\n--m\n\na <\n--m\n"
         "Content-Type: text/html\n\n<i>b</i>\n--m\n\nc\n",
         "[a <\nb\nc\n][a &lt;<hr><i>b</i><hr>c<br/>]"},
        {"a text with a name", "Content-Type: text/html; name=a.html\n\n<b>x", "[][<b>x]"},
        {"a text file and a calendar",
         "Content-Type: multipart/mixed; boundary=m\n\n--m\n\nHi\n--m\n"
         "Content-Disposition: attachment; filename=\".bashrc\"\n\nx\n--m\n"
         "Content-Type: text/calendar\n\ny\n--m--\n",
         "[Hi][] bashrc|text/plain|x calendar.ics|text/calendar|y"},
        {"no boundary", "Content-Type: multipart/mixed\n\nx", "[][]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::string summary = summaryOf(parseMessage(row.file));
        EXPECT_EQ(summary, row.summary);
    }
}

TEST(MessageFile, PartsAndLevelsHaveLimits) {
    std::string many = "Content-Type: multipart/mixed; boundary=m\n\n";
    for (int part = 0; part < 3000; ++part) {
        many += "--m\nContent-Type: a/b\n\n";
    }
    const ParsedMessage wide = parseMessage(many);
    EXPECT_EQ(wide.attachments.size(), 999U);
    EXPECT_TRUE(wide.isCut);
    std::string nested;
    for (int level = 0; level < 100; ++level) {
        const std::string mark = std::to_string(level);
        nested.append("Content-Type: multipart/mixed; boundary=").append(mark);
        nested.append("\n\n--").append(mark).append("\n");
    }
    EXPECT_EQ(summaryOf(parseMessage(nested + "\nx")), "[][] cut");
    EXPECT_EQ(summaryOf(sourceOf(std::string(20'000, 'x'))),
              "[" + std::string(16'384, 'x') + "][] cut");
}

TEST(MessageFile, HeaderTextsAreOneLineAndLeadToAReply) {
    const ParsedMessage message = parseMessage(
        "From: =?utf-8?q?Anna_B=C3=A4r=1B=E2=80=AE?= <anna@x.example>, ben@x.example\n"
        "Reply-To: list+a&b@x.example\n"
        "To: group: carl@x.example, \"Dora, D.\" <dora@x.example>;\n"
        "Date: Mon, 16 Nov 2026 10:11:12 +0100\n"
        "Subject: =?iso-8859-1?q?K=F6ln?=\n =?utf-8?b?w6k=?=\nMessage-ID: <1?a@x>\n"
        "References: <0@x>\n\t<00@x>\n\n");
    EXPECT_EQ(message.from,
              (std::vector<std::string>{"Anna Bär <anna@x.example>", "ben@x.example"}));
    EXPECT_EQ(message.to.size(), 1U);
    EXPECT_EQ(message.date, 1794820272);
    EXPECT_EQ(message.subject, "Kölné");
    EXPECT_EQ(replyUrl(message),
              "mailto:list%2Ba%26b@x.example?subject=Re%3A%20K%C3%B6ln%C3%A9&in-reply-to="
              "%3C1%3Fa%40x%3E&references=%3C0%40x%3E%20%3C00%40x%3E%20%3C1%3Fa%40x%3E");
    EXPECT_EQ(replyUrl(parseMessage("From: a@b\nSubject: re: x\n\n")),
              "mailto:a@b?subject=re%3A%20x");
    EXPECT_EQ(replyUrl(parseMessage("From: Anna\nSubject: x\n\n")), "");
}

TEST(MessageFile, NamesAreFileNames) {
    const std::pair<std::string, std::string> rows[] = {
        {"a.txt", "a.txt"},
        {"/etc/pass\nwd", "pass wd"},
        {"C:\\x\\a.doc", "a.doc"},
        {"..", "attachment"},
        {" ", "attachment"},
        {"a/", "attachment"},
        {"\xFFz", "\uFFFDz"},
        {std::string(199, 'a') + ".pdf", std::string(146, 'a') + ".pdf"},
        {"é" + std::string(300, '.'), "é" + std::string(148, '.')},
    };
    for (const auto& [given, name] : rows) {
        EXPECT_EQ(attachmentName(given, "a/b"), name) << given;
    }
}

TEST(BodyText, HtmlAsTextHasALineForEachBlock) {
    EXPECT_EQ(plainTextOfHtml("<style>p{}</style><p>a <b>b</b></p>\n<p>c<br>z</p><ul><li>e"
                              "<li>f</ul><div>g</div><div>h &lt;</div>"),
              "a b\n\nc\nz\n\ne\nf\ng\nh <");
    EXPECT_EQ(plainTextOfHtml(std::string(100'000, '<')).size(), 100'000U);
}

}  // namespace
}  // namespace quillet::message
