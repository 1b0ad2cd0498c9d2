#include <gtest/gtest.h>
#include <string>

#include "mailhost/maildir/MessageHeader.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

using namespace std::string_literals;

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

struct TextCase {
    const char* name;
    std::string header;
    std::string subject;
    std::string from;
};

TEST(MessageHeader, TextsAreDecodedLinesThatCannotDisturb) {
    const TextCase cases[] = {
        {"encoded words",
         "Subject: =?utf-8?q?caf=C3=A9?= =?koi8-r?b?0NLJ?= x\n\n",
         "caféпри x",
         ""},
        {"unknown charset", "From: =?x-none?q?a=FC?= <a@b.c>\n", "", "aü"},
        {"raw UTF-8", "Subject: ä\xE2\x82\xAC\n", "ä€", ""},
        {"raw, charset named",
         "Content-Type: text/plain; charset=\"koi8-r\"\nSubject: \xD0\xD2\xC9",
         "при",
         ""},
        {"raw, no charset", "From: J\xFCrgen <a@b.c>\nSubject: \xE4", "ä", "Jürgen"},
        {"raw, charset is a path", "Content-Type: a/b; charset=\"../x\"\nSubject: \xE4", "ä", ""},
        {"folded", "SUBJECT : a\r\n b\r\n\t c \r\n\r\nFrom: body", "a b c", ""},
        {"broken lines", "no field\n also none\n:x\nSubject: s\nFrom a: b\n", "s", ""},
        {"of an mbox", "From a@b Tue Nov 14\nSubject: s\nFrom: a@b.c\n", "s", "a@b.c"},
        {"only an mbox line", "From a@b Tue Nov 14", "", ""},
        {"body at once", "\nSubject: s\n", "", ""},
        {"controls",
         "Subject: a\0b\x1B[1m\xE2\x80\xAE"
         "c=?utf-8?q?=0Ad=E2=80=A8?=\n"s,
         "a b [1m c d",
         ""},
        {"quoted name", "From: \"Berg, Anna\" <a@b.c>, b@c.d\n", "", "Berg, Anna"},
        {"quotes in the name", "From: =?utf-8?q?=22'Anna'=22?= <a@b.c>\n", "", "Anna"},
        {"blank name", "From: \"  \xC2\xA0 \" <a@b.c>\n", "", "a@b.c"},
        {"name behind", "From: a@b.c (Anna)\n", "", "Anna"},
        {"comma in a word", "From: =?utf-8?q?Berg, Anna?= <a@b.c>\n", "", "Berg, Anna"},
        {"group", "From: undisclosed-recipients:;\n", "", "undisclosed-recipients"},
        {"group without a name", "From: :a@b.c;\n", "", "a@b.c"},
        {"no address", "From: =?utf-8?q?K=C3=A4the?= at home\n", "", "Käthe at home"},
        {"nested groups", "From: " + repeated("a:", 100000), "", "a"},
        {"long", "Subject: x" + repeated("ä", 16000), "x" + repeated("ä", 498) + "…", ""},
        {"many words",
         "Subject: " + repeated("=?utf-8?q?=C3=A4?= ", 5000),
         repeated("ä", 498) + "…",
         ""},
    };
    for (const TextCase& row : cases) {
        SCOPED_TRACE(row.name);
        const MessageHeader header = parseHeader(row.header);
        EXPECT_EQ(header.subject, row.subject);
        EXPECT_EQ(header.from, row.from);
    }
}

TEST(MessageHeader, DatesAreReadInEveryFormThatMailHas) {
    const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
        {"Tue, 14 Nov 2023 22:13:20 +0000", 1700000000},
        {"14 Nov 2023 22:13:20", 1700000000},
        {"Tue, 14 Nov 23 17:13 EST", 1700000000 - 20},
        {"Tue, (x) 14 Nov 2023\r\n 14:13:20 -0800 (PST)", 1700000000},
        {"Tue Nov 14 22:13:20 2023", 1700000000},
        {"Tuesday, 14-Nov-23 22:13:20 GMT", 1700000000},
        {"Fri, 32 Foo 2023", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, date] : cases) {
        EXPECT_EQ(parseHeader("Date: "s + text + "\n\n").date, date) << text;
    }
}

TEST(MessageHeader, IsReadToTheEmptyLineOfAFileOfAnySize) {
    const test::TemporaryFolder folder;
    const std::string end = "Subject: s\r\nDelivered-To: <Me@b.c>\r\n\r\nDelivered-To: no@b.c\n";
    for (const std::size_t size : {std::size_t{0}, std::size_t{8100}, kLongestHeader / 2}) {
        const std::string filler = "X: " + std::string(size, 'x') + "\r\n";
        const MessageHeader header =
            readHeader(folder.writeFile("cur/a:2,", filler + end + std::string(100000, 'b')));
        EXPECT_EQ(header.subject, "s") << size;
        EXPECT_EQ(header.deliveredTo, "Me@b.c") << size;
    }
    folder.writeFile("cur/b", "Delivered-To: You@b.c\n\n");
    folder.writeFile("new/c", "Delivered-To: you@B.c\n\n");
    EXPECT_EQ(commonestDeliveredTo(folder.path()), "you@b.c");
    EXPECT_EQ(commonestDeliveredTo(folder.path("none")), "");
    EXPECT_EQ(readHeader(folder.writeFile(
                             "long", "X: " + std::string(kLongestHeader, 'x') + "\nSubject: s\n\n"))
                  .subject,
              "");
}

}  // namespace
}  // namespace quillet::mailhost
