// Where the container lies, and the lists that the host writes beside the messages.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "model/ExtensionUtilities.h"
#include "model/RecordFields.h"
#include "platform/files/FileManager.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

TEST(ContainerPaths, DataFolderFollowsTheBundleIdentifier) {
    const std::pair<std::optional<std::string>, const char*> cases[] = {
        {std::nullopt, "SharedData"},
        {"it.tarno.quillet2", "SharedData"},
        {"it.tarno.quillet.beta11", "SharedDataBeta"},
        {"it.tarno.quillet.beta8.today", "SharedDataBeta"},
        {"IT.TARNO.QUILLET.BETA", "SharedData"},
    };
    const EnvironmentVariable container("QUILLET_CONTAINER", std::nullopt);
    const EnvironmentVariable data("XDG_DATA_HOME", "/data");
    for (const auto& [own, folder] : cases) {
        const EnvironmentVariable identifier("QUILLET_BUNDLE_IDENTIFIER", own);
        EXPECT_EQ(ExtensionUtilities::GroupDataPath(),
                  std::string("/data/group-containers/Q7K2M9X4TB.quillet/") + folder);
    }
    const EnvironmentVariable empty("QUILLET_CONTAINER", "");
    EXPECT_EQ(ExtensionUtilities::GroupDataPath(), std::nullopt);
}

TEST(GetGoodPath, FreeNameGetsTheFirstUnusedNumber) {
    const TemporaryFolder folder;
    for (const char* name : {"photo.png", "photo_1.png", "report.tar.gz", ".profile"}) {
        folder.writeFile(name, "");
    }
    folder.makeFolder("notes");
    const std::pair<const char*, const char*> cases[] = {
        {"new.png", "new.png"},
        {"photo.png", "photo_2.png"},
        {"photo_1.png", "photo_1_1.png"},
        {"notes", "notes_1"},
        {"report.tar.gz", "report.tar_1.gz"},
        {".profile", ".profile_1"},
    };
    for (const auto& [name, free] : cases) {
        EXPECT_EQ(RequestUtils::GetGoodPath(name, folder.path()), folder.path(free));
    }
    EXPECT_EQ(RequestUtils::GetGoodPath(std::nullopt, folder.path()), std::nullopt);
    EXPECT_EQ(RequestUtils::GetGoodPath("a", std::nullopt), std::nullopt);
}

TEST(DirectoryContent, TellsAMissingFolderFromAnUnreadableOne) {
    const TemporaryFolder folder;
    const std::string file = folder.writeFile("a.plist", "");
    const std::string other = folder.writeFile("b.plist", "");
    folder.writeFile(".DS_Store", "");
    EXPECT_THAT(ExtensionUtilities::directoryContent(folder.path()),
                Optional(UnorderedElementsAre(file, other)));
    EXPECT_THAT(ExtensionUtilities::directoryContent(folder.path("missing")), Optional(IsEmpty()));
    EXPECT_THAT(ExtensionUtilities::directoryContent(file), Optional(IsEmpty()));
    ::chmod(folder.path().c_str(), 0100);
    const OrdinaryPermissions ordinary;
    EXPECT_EQ(ExtensionUtilities::directoryContent(folder.path()), std::nullopt);
    ::chmod(folder.path().c_str(), 0700);
}

std::string entry(const std::string& key, const std::string& text) {
    return "<key>" + key + "</key><string>" + text + "</string>";
}

std::string textOf(const ExtensionAccount& account) {
    const auto text = [](const auto& field) { return field.value_or("none"); };
    std::string all = text(account.mail()) + "|" + text(account.name()) + "|" +
                      std::to_string(account.type()) + (account.enabled() ? "|on" : "|off");
    if (!account.aliases()) {
        return all + "|unread";
    }
    for (const auto& alias : *account.aliases()) {
        all += "|" + text(alias->mail()) + "," + text(alias->name()) + "," + text(alias->account());
    }
    return all;
}

template <typename Record>
std::string prettyprint(const std::string& entries) {
    const auto document = documentOf("<dict>" + entries + "</dict>");
    return Record::initWithDictonary(document.root())->prettyprint();
}

class AccountsAndAddresses : public ::testing::Test, protected OwnContainer {
protected:
    // The list of the data folder with this root element.
    void write(const std::string& list, const std::string& root) const {
        container.writeFile("SharedData/" + list + ".plist", xmlPropertyList(root));
    }

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
        write("Accounts", root);
        EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    }
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AccountsAndAddresses, AccountsHaveTheirDefaultsAndAWrongTypeStopsItsRecordAlone) {
    write("Accounts",
          "<array><dict>" + entry("enabled", "YES") + "<key>aliases</key><array><dict>" +
              entry("mail", "a@x") + entry("name", "A") + "</dict><dict>" +
              entry("account", "b@x") + "</dict></array></dict><dict>" + entry("mail", "b@x") +
              "<key>type</key><array/><key>enabled</key><true/></dict><dict>" +
              entry("mail", "c@x") +
              "</dict><string>no dictionary</string><dict><key>aliases</key>" +
              "<dict><key>one</key><true/><key>one</key><true/></dict></dict></array>");
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
    const std::string mail = entry("mail", "a@x");
    const std::string berg = entry("lastName", "Berg");
    const std::string family = entry("name", "Family");
    const auto address = prettyprint<ExtensionAddress>;
    const auto group = prettyprint<ExtensionGroup>;
    EXPECT_EQ(address(entry("firstName", "Anna") + berg + mail), "Anna Berg <a@x>");
    EXPECT_EQ(address(entry("company", "Acme") + mail), "Acme <a@x>");
    EXPECT_EQ(address(mail), "<a@x>");
    EXPECT_EQ(address(berg), "Berg <No Mail>");
    EXPECT_EQ(address(entry("mail", "")), "");
    EXPECT_EQ(address(entry("firstName", "\u3000\n") + entry("company", " Acme\u00A0") +
                      entry("mail", "")),
              "Acme");
    EXPECT_EQ(address("<key>firstName</key><true/>" + berg), "(null) (null) <No Mail>");
    EXPECT_EQ(group("<key>addresses</key><array><dict/><true/></array>"), "No Name (2)");
    EXPECT_EQ(group(family), "Family");
    EXPECT_EQ(group(family + "<key>addresses</key><true/>"), "Family");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAddress initWithDictonary "),
                            StartsWith("ExtensionAddress initWithDictonary "),
                            StartsWith("ExtensionGroup initWithDictonary ")));
}

TEST_F(AccountsAndAddresses, EveryAddressIsReadAndNoGroupAndAMissingFolderIsMade) {
    const auto addresses = [] { return ExtensionUtilities::AddressesAndGroups().addresses; };
    EXPECT_THAT(addresses(), IsEmpty());
    EXPECT_TRUE(platform::FileManager::folderExists(container.path("SharedData/Contacts")));
    write("Contacts/Addresses", "<array><dict>" + entry("rank", "7") + "</dict><dict/></array>");
    write("Contacts/Groups", "<array><dict>" + entry("name", "g") + "</dict></array>");
    ASSERT_EQ(addresses().size(), 2U);
    EXPECT_EQ(addresses()[0]->rank(), 7);
    EXPECT_EQ(addresses()[1]->description(), "ExtensionAddress No Mail");
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().groups, IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
    const std::string file = container.writeFile("no-folder", "");
    const EnvironmentVariable noTemporary("TMPDIR", file);
    for (const char* variable : {"QUILLET_CONTAINER", "XDG_RUNTIME_DIR"}) {
        const EnvironmentVariable below(variable, file + "/below");
        EXPECT_THAT(addresses(), IsEmpty());
    }
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("AddressesAndGroups "),
                            StartsWith("NSFileCoordinator AddressesAndGroups ")));
}

}  // namespace
}  // namespace quillet::test
