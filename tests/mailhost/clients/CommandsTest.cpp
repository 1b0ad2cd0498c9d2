#include <gmock/gmock.h>

#include "mailhost/clients/ClientCommands.h"
#include "mailhost/clients/DraftHtml.h"
#include "mailhost/clients/MailtoUrl.h"

#include "tests/support/EnvironmentVariable.h"

namespace quillet::mailhost {
namespace {

using ::testing::ElementsAre;

const std::string kPlain = "a+b/c%d=1@x.example";

struct Row {
    const char* name;
    Client client;
    std::string messageId;
    std::optional<Command> expected;
};

TEST(ClientCommandsTest, EachClientIsAskedForTheMessageInItsOwnWords) {
    const auto neoMutt = [](const std::string& keys) {
        return Command{"x-terminal-emulator", "-e", "neomutt", "-f", "/m/In box", "-e", keys};
    };
    const auto emacs = [](const std::string& expression) {
        return Command{"emacsclient", "--create-frame", "--no-wait", "--eval", expression};
    };
    const Command kmail{"kmail", "--view", "/m/In box/cur/1:2,S"};
    const Row rows[] = {
        {"thunderbird",
         Client::Thunderbird,
         kPlain,
         Command{"thunderbird", "mid:a+b/c%25d=1@x.example"}},
        {"evolution", Client::Evolution, "a#b?c@x", Command{"evolution", "mid:a%23b%3Fc@x"}},
        {"kmail", Client::KMail, kPlain, kmail},
        {"kmail needs no identifier", Client::KMail, "a b\"@x", kmail},
        {"neomutt",
         Client::NeoMutt,
         "1.2@x",
         neoMutt(R"(push "<limit>~i '\^.?1\\.2@x.?\$'<enter><display-message>")")},
        {"neomutt: a shell, a variable, a key and an expression",
         Client::NeoMutt,
         R"(`id`${X}^Y\z(*)@x)",
         neoMutt(
             "push \"<limit>~i '\\^.?\\`id\\`\\\\\\$\\\\{X\\\\}\\\\\\^Y\\\\\\\\z\\\\(\\\\*\\\\)@x"
             ".?\\$'<enter><display-message>\"")},
        {"notmuch: Lisp",
         Client::Notmuch,
         R"(a\b@x)",
         emacs(R"((progn (require 'notmuch) (notmuch-show "id:\"a\\b@x\"")))")},
        {"mu4e",
         Client::Mu4e,
         R"(a\b@x)",
         emacs(R"((progn (require 'mu4e) (mu4e-view-message-with-message-id "a\\b@x")))")},
        {"a quote", Client::NeoMutt, "a'<quit>@x", std::nullopt},
        {"a double quote", Client::Mu4e, "a\")(delete-file\"@x", std::nullopt},
        {"a function of NeoMutt", Client::NeoMutt, "a<quit>@x", std::nullopt},
        {"a line", Client::Thunderbird, "a\n@x", std::nullopt},
        {"a character that turns the line", Client::Thunderbird, "a\xE2\x80\xAE@x", std::nullopt},
        {"an option", Client::Evolution, "-f@x", std::nullopt},
        {"none", Client::Notmuch, "", std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(showCommand({row.client, std::nullopt},
                              {"/m/In box/cur/1:2,S", "/m/In box", row.messageId}),
                  row.expected);
    }
}

TEST(ClientCommandsTest, WhatADraftBringsStaysWithinItsField) {
    Draft draft;
    draft.to = {"ben@example.com", "d'or@example.com"};
    draft.subject = "1',attachment='file:///etc/passwd";
    draft.text = "50% & \"more\"\n\xE2\x82\xAC";
    Draft withFile = draft;
    withFile.files = {"/c/a,b'&body=x \xFF.pdf"};
    const std::string fields =
        "mailto:ben@example.com,d%27or@example.com"
        "?subject=1%27%2Cattachment%3D%27file%3A%2F%2F%2Fetc%2Fpasswd"
        "&body=50%25%20%26%20%22more%22%0D%0A%E2%82%AC";
    const std::string thunderbird =
        "to='ben%40example.com%2Cd%27or%40example.com',"
        "subject='1%27%2Cattachment%3D%27file%3A%2F%2F%2Fetc%2Fpasswd',format='text',"
        "body='50%25%20%26%20%22more%22%0A%E2%82%AC'";
    struct DraftRow {
        const char* name;
        Client client;
        const Draft& draft;
        std::optional<Command> expected;
    };
    const DraftRow rows[] = {
        {"thunderbird",
         Client::Thunderbird,
         withFile,
         Command{"thunderbird",
                 "-compose",
                 thunderbird + ",attachment='file:///c/a%2Cb%27%26body%3Dx%20%FF.pdf'"}},
        {"thunderbird without files",
         Client::Thunderbird,
         draft,
         Command{"thunderbird", "-compose", thunderbird}},
        {"evolution",
         Client::Evolution,
         withFile,
         Command{"evolution", fields + "&attach=%2Fc%2Fa%2Cb%27%26body%3Dx%20%FF.pdf"}},
        {"kmail", Client::KMail, withFile, Command{"kmail", "--attach", withFile.files[0], fields}},
        {"neomutt",
         Client::NeoMutt,
         withFile,
         Command{"x-terminal-emulator", "-e", "neomutt", "-a", withFile.files[0], "--", fields}},
        {"mu4e has no way", Client::Mu4e, withFile, std::nullopt},
    };
    for (const DraftRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(composeCommand({row.client, std::nullopt}, row.draft), row.expected);
    }
}

TEST(ClientCommandsTest, TheWordsOfAConfiguredCommandAreSplitBeforeTheMessageIsPutIn) {
    const test::EnvironmentVariable home("HOME", "/h");
    const ShownMessage message{"/m/{folder} a'b/cur/1", "/m", "1@x"};
    EXPECT_EQ(configuredCommand("~/view ~x '{file}' id:{messageid} {folder}/{other}", message),
              (Command{"/h/view", "~x", "/m/{folder} a'b/cur/1", "id:1@x", "/m/{other}"}));
    EXPECT_EQ(configuredCommand("view {messageid}", {"/f", "/m", "a b@x"}), std::nullopt);
}

TEST(ClientCommandsTest, WordsStandWhereADesktopEntryTakesThem) {
    const platform::Application flatpak{
        "x", "A Name", {"run", "--n=%c%%", "%i", "@@u", "%U", "@@"}, false};
    EXPECT_THAT(commandOf(flatpak, {"-a", "b c"}),
                ElementsAre("run", "--n=A Name%", "@@u", "-a", "b c", "@@"));
    EXPECT_THAT(platform::commandForFile(flatpak, "/a b"),
                ElementsAre("run", "--n=A Name%", "@@u", "file:///a%20b", "@@"));
    EXPECT_THAT(platform::commandForFile({"x", "", {"view", "--file=%f"}, true}, "/a b"),
                ElementsAre("x-terminal-emulator", "-e", "view", "--file=/a b"));
}

TEST(MailtoUrlTest, AReplyStaysInItsThread) {
    const std::string header =
        "From: \"Anna, B\" <anna@example.com>\r\nSubject: =?utf-8?q?50=25_=E2=82=AC?=\r\n"
        "Message-ID:\r\n <3%1@x>\r\nReferences: <1@x>\r\n\t<2@x>\r\n";
    struct ReplyRow {
        const char* name;
        std::string header;
        std::string expected;
    };
    std::string references = "References:";
    for (int number = 0; number < 40; ++number) {
        references += " <" + std::to_string(number) + "@x>";
    }
    const ReplyRow rows[] = {
        {"from",
         header,
         "mailto:anna@example.com?subject=Re%3A%2050%25%20%E2%82%AC&in-reply-to=%3C3%251%40x%3E"
         "&references=%3C1%40x%3E%20%3C2%40x%3E%20%3C3%251%40x%3E"},
        {"reply-to and an answered subject",
         "Reply-To: list: a@x, B <b@x>;\nFrom: c@x\nSubject: RE: hi\nIn-Reply-To: <0@x>\n"
         "Message-ID: <1@x>\n",
         "mailto:a@x,b@x?subject=RE%3A%20hi&in-reply-to=%3C1%40x%3E"
         "&references=%3C0%40x%3E%20%3C1%40x%3E"},
        {"nothing to go by", "X: y\n", "mailto:?subject=Re%3A%20"},
    };
    for (const ReplyRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(mailtoForReply(parseReplyHeader(row.header)), row.expected);
    }
    const auto longThread = parseReplyHeader(references + "\nMessage-ID: <me@x>\n").references;
    ASSERT_EQ(longThread.size(), ReplyHeader::kMostReferences);
    EXPECT_EQ(longThread[0] + " " + longThread[1] + " " + longThread.back(), "0@x 12@x me@x");
}

TEST(DraftHtmlTest, OnlyTextAndLinksToTheNetReachAMailProgram) {
    struct HtmlRow {
        const char* html;
        const char* harmless;
        const char* text;
    };
    const HtmlRow rows[] = {
        {"<p class='x'>One &amp; <B>two</B></p><p>3 < 4",
         "<p>One &amp; <b>two</b></p><p>3 &lt; 4",
         "One & two\n3 < 4\n"},
        {"<img src='file:///etc/passwd'>a<script>'</p>'</script>b", "ab", "ab\n"},
        {"<a href='https://x.example/?a=\"b'>this</a><br>c",
         "<a href=\"https://x.example/?a=&quot;b\">this</a><br>c",
         "this <https://x.example/?a=\"b>\nc\n"},
        {"<a href=http://x.example>http://x.example</a>",
         "<a href=\"http://x.example\">http://x.example</a>",
         "http://x.example\n"},
        {"<a title='href=http://x' href='file:///a'>a</a><style>", "a</a>", "a\n"},
        {"<!-- > --><svg><a href='http://x'></svg>x<a =b", "x", "x\n"},
        {"<a title='>' onclick=1 href = \"HTTP://x\"", "<a href=\"HTTP://x\">", "<HTTP://x>\n"},
    };
    for (const HtmlRow& row : rows) {
        SCOPED_TRACE(row.html);
        EXPECT_EQ(harmlessHtml(row.html), row.harmless);
        EXPECT_EQ(textOfDraftHtml(row.html), row.text);
    }
}

}  // namespace
}  // namespace quillet::mailhost
