// The lists that the host writes beside the messages.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/ExtensionUtilities.h"
#include "model/RecordFields.h"
#include "platform/files/FileManager.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

std::string entry(const std::string& key, const std::string& text) {
    return "<key>" + key + "</key><string>" + text + "</string>";
}

std::string textOf(const ExtensionAccount& account) {
    std::string text = account.mail().value_or("none") + "|" + account.name().value_or("none") +
                       "|" + std::to_string(account.type()) + (account.enabled() ? "|on" : "|off");
    if (!account.aliases()) {
        return text + "|unread";
    }
    for (const auto& alias : *account.aliases()) {
        text += "|" + alias->mail().value_or("none") + "," + alias->name().value_or("none") + "," +
                alias->account().value_or("none");
    }
    return text;
}

}  // namespace

class AccountsAndAddresses : public ::testing::Test, protected OwnContainer {
protected:
    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(AccountsAndAddresses, WithoutAListThereAreNoAccountsAndNoLogLine) {
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    std::string aliases;
    for (std::size_t alias = 0; alias < kMaximumRecords; ++alias) {
        aliases += "<true/>";
    }
    for (const std::string& root :
         {"<dict>" + entry("mail", "a@x") + "</dict>",
          "<array><dict><key>aliases</key><array>" + aliases + "</array></dict></array>",
          std::string("no property list")}) {
        container.writeFile("SharedData/Accounts.plist", xmlPropertyList(root));
        EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    }
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AccountsAndAddresses, AccountsHaveTheirDefaultsAndAWrongTypeStopsItsRecordAlone) {
    container.writeFile(
        "SharedData/Accounts.plist",
        xmlPropertyList(
            "<array><dict>" + entry("enabled", "YES") + "<key>aliases</key><array><dict>" +
            entry("mail", "a@x") + entry("name", "A") + "</dict><dict>" + entry("account", "b@x") +
            "</dict></array></dict><dict>" + entry("mail", "b@x") +
            "<key>type</key><array/><key>enabled</key><true/></dict><dict>" + entry("mail", "c@x") +
            "</dict><string>no dictionary</string><dict><key>aliases</key><dict>"
            "<key>one</key><true/><key>one</key><true/></dict></dict></array>"));
    std::vector<std::string> texts;
    const auto accounts = ExtensionUtilities::Accounts();
    for (const auto& account : accounts) {
        texts.push_back(textOf(*account));
    }
    EXPECT_THAT(texts,
                ElementsAre("No Mail||0|on|a@x,A,|No Mail,,b@x",
                            "b@x||0|off|unread",
                            "c@x||0|off",
                            "none|none|0|off|unread",
                            "No Mail||0|off|none,none,none"));
    EXPECT_EQ(accounts.at(2)->description(), "ExtensionAccount c@x");
    EXPECT_EQ(accounts.at(3)->description(), "ExtensionAccount (null)");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAccount initWithDictonary "),
                            StartsWith("ExtensionAccount initWithDictonary "),
                            StartsWith("ExtensionAlias initWithDictonary ")));
}

TEST_F(AccountsAndAddresses, TextOfAnAddressOrAGroupIsMadeOfWhatItHas) {
    const std::string berg = entry("lastName", "Berg");
    const std::string noMail = entry("mail", "");
    const std::string family = entry("name", "Family");
    const std::pair<std::string, const char*> addresses[] = {
        {entry("firstName", "Anna") + berg + entry("mail", "a@x"), "Anna Berg <a@x>"},
        {entry("company", "Acme") + entry("mail", "a@x"), "Acme <a@x>"},
        {entry("mail", "a@x"), "<a@x>"},
        {berg, "Berg <No Mail>"},
        {noMail, ""},
        {entry("firstName", "\u3000\n") + entry("company", " Acme\u00A0") + noMail, "Acme"},
        {"<key>firstName</key><true/>" + berg, "(null) (null) <No Mail>"},
    };
    for (const auto& [entries, text] : addresses) {
        const auto document = documentOf("<dict>" + entries + "</dict>");
        EXPECT_EQ(ExtensionAddress::initWithDictonary(document.root())->prettyprint(), text);
    }
    const std::pair<std::string, const char*> groups[] = {
        {"<key>addresses</key><array><dict/><true/></array>", "No Name (2)"},
        {family, "Family"},
        {family + "<key>addresses</key><true/>", "Family"},
    };
    for (const auto& [entries, text] : groups) {
        const auto document = documentOf("<dict>" + entries + "</dict>");
        EXPECT_EQ(ExtensionGroup::initWithDictonary(document.root())->prettyprint(), text);
    }
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAddress initWithDictonary "),
                            StartsWith("ExtensionAddress initWithDictonary "),
                            StartsWith("ExtensionGroup initWithDictonary ")));
}

TEST_F(AccountsAndAddresses, EveryAddressIsReadAndNoGroup) {
    container.writeFile("SharedData/Contacts/Addresses.plist",
                        xmlPropertyList("<array><dict>" + entry("mail", "a@x") +
                                        entry("rank", "7") + "</dict><dict/></array>"));
    container.writeFile("SharedData/Contacts/Groups.plist",
                        xmlPropertyList("<array><dict>" + entry("name", "g") + "</dict></array>"));
    const auto book = ExtensionUtilities::AddressesAndGroups();
    ASSERT_EQ(book.addresses.size(), 2U);
    EXPECT_EQ(book.addresses[0]->rank(), 7);
    EXPECT_EQ(book.addresses[1]->description(), "ExtensionAddress No Mail");
    EXPECT_THAT(book.groups, IsEmpty());
}

TEST_F(AccountsAndAddresses, MissingAddressFolderIsMadeAndOnlyAFailureIsLogged) {
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    EXPECT_TRUE(platform::FileManager::folderExists(container.path("SharedData/Contacts")));
    const std::string file = container.writeFile("no-folder", "");
    {
        const EnvironmentVariable below("QUILLET_CONTAINER", file + "/below");
        EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    }
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("AddressesAndGroups "),
                            StartsWith("NSFileCoordinator AddressesAndGroups ")));
}

}  // namespace quillet::test
