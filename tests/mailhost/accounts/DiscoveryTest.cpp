#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "mailhost/accounts/Discovery.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

struct DiscoveryCase {
    std::string name;
    std::map<std::string, std::string> files;      // below the home folder
    std::vector<std::string> folders;              // mail folders below it
    std::map<std::string, std::string> addresses;  // commonest, by Inbox below it
    std::string found;                             // as the configuration says it
    std::string problems;
};

std::string unknown(const std::string& maildir) {
    return maildir +
           ": no mail address is known; write [account YOU@EXAMPLE.COM] with maildir = " + maildir +
           " into ~/.config/quillet/mail-host.conf\n";
}

std::string channel(const std::string& name, const std::string& user, const std::string& store) {
    return "IMAPAccount " + name + "\nHost imap.example.com\nUser " + user + "\n\nIMAPStore " +
           name + "-far\nAccount " + name + "\n\nMaildirStore " + name + "-near\n" + store +
           "\n\nChannel " + name + "\nFar :" + name + "-far:\nNear :" + name +
           "-near:\nPatterns *\n\n";
}

class DiscoveryTest : public testing::TestWithParam<DiscoveryCase> {};

TEST_P(DiscoveryTest, AccountsAreFound) {
    const DiscoveryCase& one = GetParam();
    const test::EnvironmentVariable notmuch("NOTMUCH_CONFIG", std::nullopt);
    const test::TemporaryFolder home;
    for (const auto& [path, text] : one.files) {
        home.writeFile(path, text);
    }
    for (const std::string& folder : one.folders) {
        home.makeFolder(folder + "/cur");
    }
    const UserFolders folders{home.path(), home.path(".config"), home.path(".local/share"), "/s"};
    const Discovery found = discoverAccounts(folders, [&](const std::string& inbox) {
        const auto address = one.addresses.find(inbox.substr(home.path().size() + 1));
        return address == one.addresses.end() ? "" : address->second;
    });
    const std::string text = configurationText(found.configuration, folders);
    EXPECT_EQ(text, one.found);
    std::string problems;
    for (const std::string& problem : found.problems) {
        problems += problem + "\n";
    }
    EXPECT_EQ(problems, one.problems);
    const auto read = readConfiguration(text, folders);
    ASSERT_TRUE(std::holds_alternative<Configuration>(read));
    EXPECT_TRUE(std::get<Configuration>(read) == found.configuration);
}

const std::vector<DiscoveryCase> kCases{
    {"Nothing", {}, {"Mail/.x", "Mail/Sent"}, {}, "", ""},
    {"MbsyncFormsOfStores",
     {{".mbsyncrc",
       "# Sections end at an empty line.\nIMAPACCOUNT work\n  Host x\n# User no@x.example\n"
       "uSer \"anna@example.com\" # c\nUserCmd \"echo no@x.example\"\n\nUser lost@x.example\n\n"
       "IMAPStore far\nAccount work\n\nMaildirStore near\nPath \"~/My Mail/job/\"\n"
       "Inbox ~/My\\ Mail/job/INBOX\nSubFolders Verbatim\n\n"
       "Channel in\nMaster :far:INBOX\nSlave :near:INBOX\n\nChannel rest\nSlave :near:\n"
       "Master :far:\nPatterns * !INBOX\n\nChannel none\nFar :missing:\nNear :near:\n\n"
       "Group all\nChannels in rest\n" +
           channel("two", "two@example.com", "Path Mail/two\nInbox ~/in/two\nSubFolders Legacy") +
           channel("three", "three@example.com", "Inbox ~/three\nSubFolders Maildir++") +
           channel("four", "four@example.com", "Path ~/four/\nInbox ~/four/Posteingang") +
           channel("again", "Two@example.com", "Path ~/again/")}},
     {"My Mail/job/INBOX", "Mail/two/INBOX", "three", "in/two"},
     {},
     "[account anna@example.com]\nmaildir = ~/My Mail/job\nlayout = verbatim\n\n"
     "[account two@example.com]\nmaildir = ~/Mail/two\nlayout = legacy\ninbox = ~/in/two\n\n"
     "[account three@example.com]\nmaildir = ~/three\nlayout = maildir++\n\n"
     "[account four@example.com]\nmaildir = ~/four\ninbox = Posteingang\n",
     "~/again: Two@example.com is the address of another Maildir; this one is left out\n"},
    {"MbsyncInBothPlacesAndUsualInbox",
     {{".config/isyncrc", channel("a", "a@x.example", "Path ~/Mail/a/")},
      {".mbsyncrc",
       channel("b", "a@x.example", "Path ~/Mail/a") + channel("c", "c@x.example", "Path ~/c/")}},
     {"Maildir", "Maildir/.Sent", "Mail/a/INBOX"},
     {},
     "[account a@x.example]\nmaildir = ~/Mail/a\ninbox = ~/Maildir\n\n"
     "[account c@x.example]\nmaildir = ~/c\n",
     ""},
    {"ChannelWithAMailboxAndPatternsIsAnAccountOfItsOwn",
     {{".mbsyncrc",
       "IMAPStore f\nUser f@x.example\n\nIMAPStore g\nUser g@x.example\n\nMaildirStore near\n"
       "Path ~/Mail/\n\nChannel f\nFar :f:\nNear :near:f/\nPatterns *\n\n"
       "Channel g\nFar :g:\nNear :near:g/\nPatterns *\n"}},
     {},
     {},
     "[account f@x.example]\nmaildir = ~/Mail/f\n\n[account g@x.example]\nmaildir = ~/Mail/g\n",
     ""},
    {"ChannelThatGivesTheInboxAnotherName",
     {{".mbsyncrc",
       "IMAPStore f\nUser f@x.example\n\nIMAPStore g\nUser g@x.example\n\nMaildirStore near\n"
       "Path ~/Mail/\nInbox ~/Mail/INBOX\n\nChannel t\nFar :f:\"Deleted Items\"\n"
       "Near :near:Trash\n\nChannel f\nFar :f:\nNear :near:from-f\n\n"
       "Channel g\nFar :g:INBOX\nNear :near:from-g\n"}},
     {"Mail/from-f", "Mail/from-g", "Mail/Trash"},
     {},
     "[account f@x.example]\nmaildir = ~/Mail\ninbox = from-f\n",
     "~/Mail: it has mail of another account; write [account g@x.example] with maildir, inbox, "
     "archive and trash\n"},
    {"NotmuchRootAndItsUser",
     {{".notmuch-config",
       "[database]\npath=post\n[user]\nname=Anna \"A\" Berg\nprimary_email=anna@x.example\n"},
      {".config/msmtp/config", "account a\nfrom *@x.example\n"}},
     {"post/one/Inbox", "post/one/Archive", "post/Archive", "post/x/y"},
     {},
     "[account anna@x.example]\nname = \"Anna \\\"A\\\" Berg\"\nmaildir = ~/post/one\n",
     ""},
    {"SenderOfMsmtpComesBeforeNotmuch",
     {{".config/notmuch/default/config",
       "[database]\nmail_root=/nowhere\npath=x\n[user]\nprimary_email=b@x.example\n"},
      {".msmtprc",
       "defaults\nfrom d@x.example\naccount one\nfrom \"o@x.example\"\naccount two\nuser x\n"
       "account default : two, one\n"}},
     {"Maildir"},
     {{"Maildir", "c@x.example"}},
     "[account o@x.example]\nmaildir = ~/Maildir\n",
     ""},
    {"EveryMaildirGetsItsOwnAddress",
     {{".msmtprc", "account default\nfrom a@x.example\n"}},
     {".local/share/mail/one/inbox",
      "Mail/two",
      "Mail/three/INBOX",
      "Mail/four/INBOX",
      ".local/share/local-mail/inbox",
      ".local/share/local-mail/trash"},
     {{".local/share/mail/one/inbox", "1@x.example"},
      {"Mail/three/INBOX", "1@X.example"},
      {"Mail/four/INBOX", "no address"},
      {".local/share/local-mail/inbox", "k@x.example"}},
     "[account 1@x.example]\nmaildir = ~/.local/share/mail/one\n\n"
     "[account k@x.example]\nmaildir = ~/.local/share/local-mail\nlayout = kmail\n",
     unknown("~/Mail/four") + unknown("~/Mail/three") + unknown("~/Mail/two")},
    {"LastMaildirWithoutAddressGetsTheSender",
     {{".msmtprc", "account default\nfrom a@x.example\n"}},
     {"Mail/INBOX", "Mail/sub/INBOX", "Maildir"},
     {{"Mail/INBOX", "m@x.example"}},
     "[account m@x.example]\nmaildir = ~/Mail\n\n[account a@x.example]\nmaildir = ~/Maildir\n",
     ""},
    {"PathThatNoFileCanHoldIsLeftOut",
     {},
     {"Mail/a\nb", "Mail/\xFF"},
     {},
     "",
     "~/Mail/a\nb: the name of the folder is not text in UTF-8\n"
     "~/Mail/\xFF: the name of the folder is not text in UTF-8\n"},
};

INSTANTIATE_TEST_SUITE_P(Places, DiscoveryTest, testing::ValuesIn(kCases), [](const auto& one) {
    return one.param.name;
});

TEST(Discovery, ConfigurationOfNotmuchMayLieElsewhereAndDamagedOnesDoNoHarm) {
    const test::TemporaryFolder home;
    home.makeFolder("post/cur");
    home.writeFile(".mbsyncrc", std::string((1 << 20) + 1, 'x'));
    home.writeFile("n", "[database]\npath=" + home.path("post") + "\n[user]\nprimary_email=a@b\n");
    const UserFolders folders{home.path(), home.path("c"), home.path("d"), home.path("s")};
    const test::EnvironmentVariable notmuch("NOTMUCH_CONFIG", home.path("n"));
    const Discovery found = discoverAccounts(folders, {});
    EXPECT_EQ(configurationText(found.configuration, folders), "[account a@b]\nmaildir = ~/post\n");
    ASSERT_EQ(found.problems.size(), 1U);
    EXPECT_NE(found.problems[0].find(".mbsyncrc"), std::string::npos);
}

}  // namespace
}  // namespace quillet::mailhost
