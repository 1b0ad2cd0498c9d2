#include <gtest/gtest.h>
#include <vector>

#include "mailhost/accounts/Configuration.h"

#include "tests/support/DocumentExample.h"
#include "tests/support/EnvironmentVariable.h"

namespace quillet::mailhost {
namespace {

const UserFolders kFolders{"/home/u", "/home/u/.config", "/home/u/.local/share", "/home/u/s"};

std::string problemsOf(std::string_view text) {
    const auto read = readConfiguration(text, kFolders);
    std::string lines;
    if (const auto* problems = std::get_if<std::vector<ConfigurationProblem>>(&read)) {
        for (const ConfigurationProblem& problem : *problems) {
            lines += std::to_string(problem.line) + ": " + problem.text + "\n";
        }
    }
    return lines;
}

void expectConfiguration(std::string_view text, const Configuration& expected) {
    EXPECT_EQ(problemsOf(text), "");
    const auto read = readConfiguration(text, kFolders);
    ASSERT_TRUE(std::holds_alternative<Configuration>(read));
    const std::string written = configurationText(std::get<Configuration>(read), kFolders);
    EXPECT_TRUE(std::get<Configuration>(read) == expected) << written;
    EXPECT_EQ(problemsOf(written), "") << written;
    const auto again = readConfiguration(written, kFolders);
    EXPECT_TRUE(std::get<Configuration>(again) == expected) << written;
}

// An account with its address and Maildir; the other values follow the text below its section.
AccountConfiguration accountWith(const std::function<void(AccountConfiguration&)>& change) {
    AccountConfiguration account;
    account.address = "a@b.example";
    account.maildir = "/m";
    change(account);
    return account;
}

TEST(Configuration, ExampleOfTheDocumentHasTheValuesThatItShows) {
    Configuration expected;
    AccountConfiguration account;
    account.address = "anna@example.com";
    account.name = "Anna Berg";
    account.maildir = "/home/u/Mail/work";
    account.inbox = {"INBOX"};
    account.archive = {"Archive"};
    account.trash = {"Trash"};
    account.todoIsFlagged = true;
    account.memo = {"Notes", "Ideas, large and small"};
    account.afterChange = {"mbsync", "work"};
    expected.accounts = {account};
    expectConfiguration(test::documentExample("mail-host.md", "ini"), expected);
}

TEST(Configuration, TextWithoutLinesIsTheUsualConfiguration) {
    expectConfiguration("", {});
    expectConfiguration("\xEF\xBB\xBF# nothing\r\n\n", {});
    EXPECT_EQ(configurationText({}, kFolders), "");
}

TEST(Configuration, GeneralValuesSurviveWriting) {
    struct Case {
        std::string text;
        std::string open;
        bool notices = true;
        bool notify = false;
    };
    const std::vector<Case> cases{
        {"[GENERAL]\nOpen = NeoMutt # c\nnotices=No\nnotify\t= yes", "neomutt", false, true},
        {"[general] # c\nopen = \"my prog\" '# {file}' x#{x} # c", "\"my prog\" '# {file}' x#{x}"},
        {"[general]\nopen = \"sh -c \\\"cat # {file}\\\"\"", "sh -c \"cat # {file}\""},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.text);
        Configuration expected;
        expected.open = one.open;
        expected.notices = one.notices;
        expected.notify = one.notify;
        expectConfiguration(one.text, expected);
    }
}

TEST(Configuration, AccountValuesSurviveWriting) {
    using Account = AccountConfiguration;
    struct Case {
        std::string text;
        std::function<void(Account&)> change;
    };
    const std::vector<Case> cases{
        {R"(name = "  \"A\" \\ \n # b, " # c)", [](Account& a) { a.name = R"(  "A" \ \n # b, )"; }},
        {"name = Berg, Anna#1", [](Account& a) { a.name = "Berg, Anna#1"; }},
        {"name =", [](Account&) {}},
        {"layout = Maildir++", [](Account& a) { a.layout = Layout::MaildirPlusPlus; }},
        {"layout = kmail\nshow = UNREAD",
         [](Account& a) {
             a.layout = Layout::KMail;
             a.onlyUnread = true;
         }},
        {"inbox = INBOX , \"a, b\", c#d # e",
         [](Account& a) {
             a.inbox = {"INBOX", "a, b", "c#d"};
         }},
        {"memo = ~, ~/x/, /a//, ~x, \"~/q\" # c",
         [](Account& a) {
             a.memo = {"/home/u", "/home/u/x", "/a", "~x", "/home/u/q"};
         }},
        {"todo = Flagged, \"flagged\", To Do",
         [](Account& a) {
             a.todoIsFlagged = true;
             a.todo = {"flagged", "To Do"};
         }},
        {R"(after-change = sh -c 'a # "b' x\ y "" # c)",
         [](Account& a) {
             a.afterChange = {"sh", "-c", "a # \"b", "x y", ""};
         }},
        {"after-change = \"mbsync -c ~/rc work\"",
         [](Account& a) {
             a.afterChange = {"mbsync", "-c", "/home/u/rc", "work"};
         }},
        {"after-change = # nothing", [](Account&) {}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.text);
        Configuration expected;
        expected.accounts = {accountWith(one.change)};
        expectConfiguration("[account a@b.example]\nmaildir = /m/\n" + one.text, expected);
    }
}

TEST(Configuration, EachProblemHasItsLineAndAReason) {
    const std::string account = "[account a@b.example]\nmaildir = /m\n";
    struct Case {
        std::string text;
        std::string problems;
    };
    const std::vector<Case> cases{
        {"open = auto", "1: \"open\" stands before the first section\n"},
        {"[general\n", "1: the closing ] of the section is missing\n"},
        {"\n[folders]\nx = 1\nrubbish",
         "2: the section \"folders\" is unknown; there are [general] and [account ADDRESS]\n"
         "4: \"rubbish\" is neither a section nor KEY = VALUE\n"},
        {"[general]\n[general]", "2: [general] is given twice\n"},
        {"[general]\ncolour = red\nmaildir = /m\nnotify = 1\nopen = thunderbrd",
         "2: the key \"colour\" is unknown\n3: maildir belongs into [account ADDRESS]\n"
         "4: notify is true or false, not \"1\"\n"
         "5: open is auto, thunderbird, evolution, kmail, neomutt, or a command with {file}, "
         "{messageid} or {folder}\n"},
        {"[account]\nmaildir = /m",
         "1: the mail address is missing; write [account YOU@EXAMPLE.COM]\n"},
        {"[account a@b.example]\nname = A\n\n" + account,
         "1: the account \"a@b.example\" has no maildir\n"
         "4: the account \"a@b.example\" is given twice\n"},
        {account + "[account A@B.Example]\nmaildir = /n",
         "3: the account \"A@B.Example\" is given twice\n"},
        {account + "Archive = A\narchive = B\nnotify = no",
         "4: archive is given twice\n5: notify belongs into [general]\n"},
        {"[account a@b.example]\nmaildir = Mail\nlayout = flat\nshow = some",
         "2: maildir is a folder that begins with / or ~/, not \"Mail\"\n"
         "3: layout is auto, verbatim, maildir++, legacy or kmail, not \"flat\"\n"
         "4: show is all or unread, not \"some\"\n"},
        {account + "inbox = a,,b\ntrash = a/../../b\nmemo = \"a\" b\nname = \"a\nafter-change = 'a",
         "3: inbox lacks the name of a folder\n"
         "4: trash: a folder's name cannot lead out of the Maildir by \"..\"\n"
         "5: memo: text follows the closing quote\n6: name: the closing quote is missing\n"
         "7: after-change: the quotes of the command do not match\n"},
        {account + "name = \xFF\n[account \xC3@x]\nname = a" + std::string(1, '\0'),
         "3: the line is not text in UTF-8\n4: the line is not text in UTF-8\n"
         "5: the line is not text in UTF-8\n"},
        {std::string((1 << 20) + 1, '\n'), "1: the file is longer than 1 MiB\n"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.text.substr(0, 200));
        EXPECT_EQ(problemsOf(one.text), one.problems);
    }
}

TEST(Configuration, AddressThatCannotNameAFolderIsAProblem) {
    const std::string longest = std::string(198, 'a') + "@b";
    for (const std::string& address :
         {std::string("a@b"), longest, std::string("ü+x#y@b.example")}) {
        EXPECT_EQ(problemsOf("[account " + address + "]\nmaildir = /m"), "") << address;
    }
    for (const std::string& address : {std::string("a"),
                                       std::string("@b"),
                                       std::string("a@"),
                                       std::string("a@b@c"),
                                       std::string("a/b@c"),
                                       std::string(".a@b"),
                                       std::string("a b@c"),
                                       std::string("a\x01@c"),
                                       std::string("a\u2028@c"),
                                       longest + "b"}) {
        EXPECT_NE(problemsOf("[account " + address + "]\nmaildir = /m").find("mail address"),
                  std::string::npos)
            << address;
    }
}

TEST(UserFolders, RelativeVariablesDoNotCount) {
    const test::EnvironmentVariable home("HOME", "/h/");
    const test::EnvironmentVariable config("XDG_CONFIG_HOME", "/c/");
    const test::EnvironmentVariable data("XDG_DATA_HOME", "d");
    const test::EnvironmentVariable state("XDG_STATE_HOME", std::nullopt);
    const UserFolders folders = UserFolders::ofEnvironment();
    EXPECT_EQ(folders.home + " " + folders.config + " " + folders.data + " " + folders.state,
              "/h /c /h/.local/share /h/.local/state");
}

}  // namespace
}  // namespace quillet::mailhost
