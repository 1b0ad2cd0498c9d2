#include <filesystem>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "mailhost/accounts/AccountFolders.h"
#include "mailhost/accounts/FolderRoleNames.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

void makeMailFolders(const test::TemporaryFolder& maildir, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        maildir.makeFolder(name + "/cur");
    }
}

// "Archive/2026=.Archive.2026" for each folder: its name and its path below `maildir`.
std::string textOf(const std::vector<MailFolder>& folders, const std::string& maildir) {
    std::string text;
    for (const MailFolder& folder : folders) {
        const std::string path =
            folder.path.starts_with(maildir) ? folder.path.substr(maildir.size()) : folder.path;
        text += (text.empty() ? "" : " ") + folder.name + "=" + path;
    }
    return text;
}

TEST(MailFolders, EachLayoutIsRecognisedAndNamesAreDecoded) {
    struct Case {
        Layout layout;
        std::vector<std::string> folders;
        std::string found;
    };
    const std::vector<Case> cases{
        {Layout::Verbatim,
         {"INBOX", "Archive/2026", "Entw&APw-rfe", "R&D", "a/tmp", ".notmuch/x", "[Gmail].Trash"},
         "Archive/2026=/Archive/2026 Entwürfe=/Entw&APw-rfe INBOX=/INBOX R&D=/R&D "
         "[Gmail].Trash=/[Gmail].Trash"},
        {Layout::Verbatim, {".", "Archive"}, "Archive=/Archive INBOX="},
        {Layout::MaildirPlusPlus,
         {".", ".Archive.2026", ".Entw&APw-rfe", ".R&AGE-", "x"},
         "Archive/2026=/.Archive.2026 Entwürfe=/.Entw&APw-rfe INBOX= R&AGE-=/.R&AGE-"},
        {Layout::MaildirPlusPlus, {"."}, "INBOX="},
        {Layout::Legacy,
         {"INBOX", "Archive/.2026", "Archive/.2026/.May"},
         "Archive/2026=/Archive/.2026 Archive/2026/May=/Archive/.2026/.May INBOX=/INBOX"},
        {Layout::KMail,
         {".", "inbox", ".inbox.directory/sub", ".inbox.directory/.sub.directory/deep", "inbox/x"},
         "inbox=/inbox inbox/sub=/.inbox.directory/sub "
         "inbox/sub/deep=/.inbox.directory/.sub.directory/deep"},
        {Layout::Verbatim, {}, ""},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.found);
        const test::TemporaryFolder maildir;
        makeMailFolders(maildir, one.folders);
        // The layout stands in the folders alone, but for a root that KMail may have, too.
        const Layout layout = one.layout == Layout::KMail ? one.layout : Layout::Auto;
        EXPECT_EQ(textOf(mailFolders(maildir.path(), layout), maildir.path()), one.found);
        EXPECT_EQ(textOf(mailFolders(maildir.path(), one.layout), maildir.path()), one.found);
    }
}

TEST(MailFolders, LinksInACircleAndDeepFoldersComeToAnEnd) {
    const test::TemporaryFolder maildir;
    makeMailFolders(maildir, {"b/c"});
    std::string deep;
    for (int level = 0; level < 40; ++level) {
        deep += "/d";
    }
    makeMailFolders(maildir, {"x" + deep});
    const test::TemporaryFolder elsewhere;
    makeMailFolders(elsewhere, {"far"});
    std::filesystem::create_symlink(maildir.path(), maildir.path("a"));
    std::filesystem::create_symlink("..", maildir.path("b/up"));
    std::filesystem::create_symlink("b/c", maildir.path("alias"));
    std::filesystem::create_symlink(elsewhere.path(), maildir.path("link"));
    EXPECT_EQ(textOf(mailFolders(maildir.path(), Layout::Verbatim), maildir.path()),
              "b/c=/b/c link/far=/link/far");
}

// What findFolders() answers: a line for each role that has folders, and the problems.
std::string rolesOf(const AccountFolders& folders, const std::string& maildir) {
    std::string text;
    const auto add = [&](const char* role, const std::vector<MailFolder>& list) {
        text += list.empty() ? "" : role + (" " + textOf(list, maildir)) + "\n";
    };
    const auto addOne = [&](const char* role, const std::optional<MailFolder>& folder) {
        add(role, folder ? std::vector{*folder} : std::vector<MailFolder>());
    };
    add("inbox", folders.inbox);
    add("todo", folders.todo);
    add("memo", folders.memo);
    addOne("archive", folders.archive);
    addOne("trash", folders.trash);
    addOne("drafts", folders.drafts);
    text += folders.todoIsFlagged ? "flagged\n" : "";
    for (const std::string& problem : folders.problems) {
        text += "! " + problem.substr(problem.find(": ") + 2) + "\n";
    }
    return text;
}

std::string missing(const std::string& name, const std::string& key) {
    return "! no " + name + " is found; write " + key + " = FOLDER into the configuration\n";
}

std::string doubtful(const std::string& folders, const std::string& name, const std::string& key) {
    return "! " + folders + " both look like the " + name + "; write " + key +
           " = FOLDER into the configuration\n";
}

struct RoleCase {
    std::vector<std::string> folders;
    std::function<void(AccountConfiguration&)> configure;
    std::string found;
};

void expectRoles(const std::vector<RoleCase>& cases) {
    for (const RoleCase& one : cases) {
        SCOPED_TRACE(one.found);
        const test::TemporaryFolder maildir;
        makeMailFolders(maildir, one.folders);
        AccountConfiguration account;
        account.maildir = maildir.path();
        one.configure(account);
        EXPECT_EQ(rolesOf(findFolders(account), maildir.path()), one.found);
    }
}

TEST(FolderRoles, NoNameStandsForTwoRoles) {
    for (const RoleNames& entry : folderRoleNames()) {
        for (const std::string_view name : entry.names) {
            EXPECT_EQ(roleOfFolder(name).role, entry.role) << name;
            EXPECT_EQ(roleOfFolder(std::string(name) + "/1999").year > 0,
                      entry.role == FolderRole::Archive)
                << name;
        }
    }
}

TEST(FindFolders, NamesTellTheRolesInManyLanguages) {
    const auto nothing = [](AccountConfiguration&) {};
    const std::string usual = "inbox INBOX=/INBOX\n";
    expectRoles({
        {{"INBOX", "ARCHIVES", "Papierkorb", "Entw&APw-rfe", "Aufgaben", "Notizen", "Other"},
         nothing,
         usual + "todo Aufgaben=/Aufgaben\nmemo Notizen=/Notizen\narchive ARCHIVES=/ARCHIVES\n"
                 "trash Papierkorb=/Papierkorb\ndrafts Entwürfe=/Entw&APw-rfe\n"},
        {{"INBOX", "Архив", "E\xCC\x81LE\xCC\x81MENTS SUPPRIME\xCC\x81S", "メモ"},
         nothing,
         usual + "memo メモ=/メモ\narchive Архив=/Архив\ntrash "
                 "E\xCC\x81LE\xCC\x81MENTS SUPPRIME\xCC\x81S=/E\xCC\x81LE\xCC\x81MENTS "
                 "SUPPRIME\xCC\x81S\nflagged\n"},
        {{"INBOX", "[Google Mail]/Bin", "[Gmail].All Mail", "INBOX/Notes"},
         nothing,
         usual + "memo INBOX/Notes=/INBOX/Notes\narchive [Gmail].All Mail=/[Gmail].All Mail\n"
                 "trash [Google Mail]/Bin=/[Google Mail]/Bin\nflagged\n"},
        {{".", ".Archives.2024", ".Archives.2026", ".Archives.2025", ".All Mail", ".INBOX.Trash"},
         nothing,
         "inbox INBOX=\narchive Archives/2026=/.Archives.2026\n"
         "trash INBOX/Trash=/.INBOX.Trash\nflagged\n"},
        {{".",
          ".INBOX",
          ".Archive",
          ".Archive.2026",
          ".Trash",
          ".Deleted Items",
          ".Memo",
          ".Notes"},
         nothing,
         "inbox INBOX=\narchive Archive=/.Archive\nflagged\n" +
             doubtful("\"Deleted Items\" and \"Trash\"", "Trash", "trash") +
             doubtful("\"Memo\" and \"Notes\"", "Memo folder", "memo")},
        {{"INBOX", "Inbox", "Archive/2026", "Archives/2026", "Todos"},
         nothing,
         "flagged\n" + doubtful("\"INBOX\" and \"Inbox\"", "Inbox", "inbox") +
             doubtful("\"Archive/2026\" and \"Archives/2026\"", "Archive", "archive") +
             missing("Trash", "trash")},
        {{"INBOX", "Sent"},
         nothing,
         usual + "flagged\n" + missing("Archive", "archive") + missing("Trash", "trash")},
    });
}

TEST(FindFolders, ConfigurationComesBeforeNames) {
    using Account = AccountConfiguration;
    expectRoles({
        {{"INBOX", "Archive", "Old", "Trash", "Entw&APw-rfe", "To Do", "b&APw-"},
         [](Account& a) {
             a.inbox = {"inbox", "bü", "INBOX"};
             a.archive = {"Old", "Entwürfe"};
             a.trash = {a.maildir + "/Trash"};
             a.todoIsFlagged = true;
             a.memo = {"Not/Yet", "/nowhere"};
         },
         "inbox INBOX=/INBOX bü=/b&APw-\nmemo Not/Yet=/Not/Yet nowhere=/nowhere\n"
         "archive Old=/Old\ntrash Trash=/Trash\nflagged\n"
         "! the folder \"Not/Yet\" (memo) is not there\n"
         "! the folder \"nowhere\" (memo) is not there\n"},
        {{".", ".Trash", ".Archive", ".x.y"},
         [](Account& a) {
             a.layout = Layout::MaildirPlusPlus;
             a.inbox = {"INBOX"};
             a.archive = {"x/y"};
             a.todo = {"new/one", "../.."};
         },
         "inbox INBOX=\ntodo new/one=/.new.one\narchive x/y=/.x.y\ntrash Trash=/.Trash\n"
         "! the folder \"new/one\" (todo) is not there\n"
         "! todo cannot lead out of the Maildir by \"..\"\n"},
        {{"INBOX", "All Mail", "Archive", "Trash", "Junk", "Old"},
         [](Account& a) {
             a.inbox = {"INBOX", "All Mail"};
             a.memo = {"Junk", "Archive", "Old"};
             a.archive = {"Old"};
         },
         "inbox INBOX=/INBOX All Mail=/All Mail\narchive Old=/Old\ntrash Trash=/Trash\nflagged\n"
         "! \"Junk\" is not shown: Archive, Trash, Drafts and Junk never are\n"
         "! \"Archive\" is not shown: Archive, Trash, Drafts and Junk never are\n"
         "! \"Old\" is not shown: Archive, Trash, Drafts and Junk never are\n"},
        {{"INBOX", "All Mail", "Trash"},
         [](Account& a) { a.inbox = {"All Mail"}; },
         "inbox All Mail=/All Mail\ntrash Trash=/Trash\nflagged\n" + missing("Archive", "archive")},
        {{},
         [](Account& a) {
             a.maildir += "/gone";
             a.layout = Layout::Legacy;
             a.archive = {"a/b"};
         },
         "archive a/b=/gone/a/.b\nflagged\n! the folder is missing or cannot be entered\n"},
    });
}

TEST(FindFolders, LinkToAHiddenFolderIsHiddenAndOneToAFolderElsewhereIsNot) {
    const test::TemporaryFolder maildir;
    const test::TemporaryFolder elsewhere;
    makeMailFolders(maildir, {"INBOX", "Trash", "Archive"});
    makeMailFolders(elsewhere, {"box"});
    std::filesystem::create_symlink("Trash", maildir.path("Reading"));
    std::filesystem::create_symlink(elsewhere.path("box"), maildir.path("Later"));
    AccountConfiguration account;
    account.maildir = maildir.path();
    account.memo = {"Reading", "Later"};
    EXPECT_EQ(rolesOf(findFolders(account), maildir.path()),
              "inbox INBOX=/INBOX\nmemo Later=/Later\narchive Archive=/Archive\n"
              "trash Trash=/Trash\nflagged\n"
              "! \"Reading\" is not shown: Archive, Trash, Drafts and Junk never are\n");
}

}  // namespace
}  // namespace quillet::mailhost
