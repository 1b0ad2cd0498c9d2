#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/AddressBook.h"
#include "platform/files/FileManager.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AddressesAndGroupsTest : public ::testing::Test, protected OwnContainer {
protected:
    static std::string entry(const std::string& key, const std::string& text) {
        return "<key>" + key + "</key><string>" + text + "</string>";
    }

    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(AddressesAndGroupsTest, TextOfARecordIsMadeOfWhatItHas) {
    const std::string berg = entry("lastName", "Berg");
    const std::string noMail = entry("mail", "");
    const std::pair<std::string, const char*> addresses[] = {
        {entry("firstName", "Anna") + berg + entry("mail", "a@x"), "Anna Berg <a@x>"},
        {entry("company", "Acme") + entry("mail", "a@x"), "Acme <a@x>"},
        {entry("mail", "a@x"), "<a@x>"},
        {entry("firstName", "Anna") + noMail, "Anna"},
        {berg, "Berg <No Mail>"},
        {noMail, ""},
        {entry("firstName", "\u3000\n") + entry("company", " Acme\u00A0") + noMail, "Acme"},
        {"<key>firstName</key><true/>" + berg,
         "(null) (null) <No Mail>"},  // a wrong type ends the reading
    };
    for (const auto& [entries, text] : addresses) {
        const auto document = documentOf("<dict>" + entries + "</dict>");
        EXPECT_EQ(ExtensionAddress::initWithDictonary(document.root())->prettyprint(), text);
    }
    const std::pair<std::string, const char*> groups[] = {
        {"<key>addresses</key><array><dict/><true/></array>", "No Name (2)"},
        {entry("name", "Family"), "Family"},
        {entry("name", "Family") + "<key>addresses</key><true/>", "Family"},
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

TEST_F(AddressesAndGroupsTest, EveryAddressIsReadAndNoGroup) {
    container.writeFile("SharedData/Contacts/Addresses.plist",
                        xmlPropertyList("<array><dict>" + entry("mail", "a@x") +
                                        "<key>rank</key><string>7</string></dict><dict/></array>"));
    container.writeFile("SharedData/Contacts/Groups.plist",
                        xmlPropertyList("<array><dict>" + entry("name", "g") + "</dict></array>"));
    const auto book = ExtensionUtilities::AddressesAndGroups();
    ASSERT_EQ(book.addresses.size(), 2U);
    EXPECT_EQ(book.addresses[0]->mail(), "a@x");
    EXPECT_EQ(book.addresses[0]->rank(), 7);
    EXPECT_EQ(book.addresses[1]->description(), "ExtensionAddress No Mail");
    EXPECT_THAT(book.groups, IsEmpty());
}

TEST_F(AddressesAndGroupsTest, MissingFolderIsMadeAndOnlyAFailureIsLogged) {
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
