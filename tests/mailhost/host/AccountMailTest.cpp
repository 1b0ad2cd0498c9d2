#include <ctime>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "mailhost/host/AccountMail.h"
#include "mailhost/host/CommandLine.h"
#include "mailhost/maildir/MaildirName.h"

#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class AccountMailTest : public testing::Test {
protected:
    AccountConfiguration configuration() const {
        AccountConfiguration account;
        account.address = "a@b.c";
        account.maildir = folder_.path("Mail");
        return account;
    }
    void add(const std::string& file, const std::string& subject) const {
        folder_.writeFile("Mail/" + file, "Subject: " + subject + "\n\n");
    }
    // "FILE CODE: SUBJECT, SUBJECT" for each list that is shown.
    static std::vector<std::string> shown(AccountMail& mail) {
        mail.refresh();
        std::vector<std::string> texts;
        for (const PublishedList& list : mail.published(std::time(nullptr)).lists) {
            texts.push_back(list.folder + " " + std::to_string(static_cast<int>(list.code)) + ":");
            for (const MessageRow& row : list.rows) {
                texts.back() += " " + row.subject;
            }
        }
        return texts;
    }

    test::TemporaryFolder folder_;
    test::LogCapture log_;
};

TEST_F(AccountMailTest, FoldersHaveTheirCodesAndFlaggedMessagesAreToDoAsWell) {
    add("INBOX/cur/1.a:2,FS", "flagged");
    add("INBOX/new/2.b", "plain");
    add("Notes/cur/3.c:2,S", "note");
    add("Archive/cur/4.d:2,S", "old");
    AccountMail mail(configuration());
    EXPECT_THAT(shown(mail),
                ElementsAre("INBOX 1: plain flagged", "INBOX 11: flagged", "Notes 12: note"));
    const std::string identifier = identifierOf("1.a");
    const auto place = mail.find(identifier, "11");
    ASSERT_TRUE(place);
    EXPECT_EQ(place->file, "cur/1.a:2,FS");
    EXPECT_FALSE(mail.find(identifierOf("4.d"), "1"));
    EXPECT_FALSE(mail.find("q", "1"));
    mail.forget(*place, identifier);
    EXPECT_THAT(mail.published(0).lists[1].rows, testing::IsEmpty());
    auto unread = configuration();
    unread.onlyUnread = true;
    AccountMail unreadMail(unread);
    EXPECT_THAT(shown(unreadMail), ElementsAre("INBOX 1: plain", "INBOX 11:", "Notes 12:"));
}

TEST_F(AccountMailTest, AMaildirThatIsMissingKeepsItsLastListAndIsSeenWhenItReturns) {
    AccountMail mail(configuration());
    EXPECT_THAT(shown(mail), ElementsAre());
    EXPECT_TRUE(mail.isAwaited());
    EXPECT_TRUE(mail.isFolderMissing());
    add("INBOX/cur/1.a:2,S", "first");
    EXPECT_THAT(shown(mail), ElementsAre("INBOX 1: first", "INBOX 11:"));
    EXPECT_FALSE(mail.isAwaited());
    EXPECT_FALSE(mail.isFolderMissing());
    fs::rename(folder_.path("Mail"), folder_.path("away"));
    EXPECT_THAT(shown(mail), ElementsAre("INBOX 1: first", "INBOX 11:"));
    mail.findFoldersAgain();
    EXPECT_THAT(shown(mail), ElementsAre("INBOX 1: first", "INBOX 11:"));
    EXPECT_FALSE(mail.isAwaited());
    EXPECT_TRUE(mail.isFolderMissing());
    fs::rename(folder_.path("away"), folder_.path("Mail"));
    EXPECT_THAT(shown(mail), ElementsAre("INBOX 1: first", "INBOX 11:"));
    EXPECT_FALSE(mail.isFolderMissing());
}

TEST_F(AccountMailTest, FoldersOfOneNameHaveFilesOfTheirOwn) {
    const std::vector<PublishedAccount> accounts{
        {"a@b.c",
         "A",
         {{"x/INBOX", StandardFolder::Inbox, {}}, {"x/INBOX", StandardFolder::Inbox, {}}}}};
    std::vector<std::string> files;
    for (const auto& [file, bytes] : containerFiles(accounts)) {
        files.push_back(file);
    }
    EXPECT_THAT(
        files,
        ElementsAre(
            "Accounts.plist", "Today/a@b.c/1-x%2FINBOX-2.plist", "Today/a@b.c/1-x%2FINBOX.plist"));
}

TEST(MailHostCommandLine, WhatMakesNoSenseIsWrongUsage) {
    const struct {
        std::vector<const char*> arguments;
        bool isRight;
    } rows[] = {
        {{"--once", "--log", "--identifier", "it.tarno.quillet.beta8"}, true},
        {{"quillet://open"}, true},
        {{"--once", "quillet://open"}, false},
        {{"--detect", "--once"}, false},
        {{"--detect", "--log"}, false},
        {{"--identifier", ".."}, false},
        {{"--identifier", "a/b.c"}, false},
        {{"--identifier", ""}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments.back());
        std::vector<char*> arguments{const_cast<char*>("quillet-mail-host")};
        for (const char* argument : row.arguments) {
            arguments.push_back(const_cast<char*>(argument));
        }
        const auto read = readCommandLine(arguments);
        EXPECT_EQ(std::holds_alternative<CommandLine>(read), row.isRight);
    }
}

}  // namespace
}  // namespace quillet::mailhost
