#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/ExtensionUtilities.h"
#include "platform/foundation/FileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AddressesAndGroupsTest : public ::testing::Test {
protected:
    static std::string entry(const std::string& key, const std::string& text) {
        return "<key>" + key + "</key><string>" + text + "</string>";
    }

    TemporaryFolder container;
    TemporaryFolder runtime;
    EnvironmentVariable containerVariable{"QUILLET_CONTAINER", container.path()};
    EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(AddressesAndGroupsTest, TextOfAnAddressIsMadeOfWhatItHas) {
    const struct {
        std::string entries, fullName, prettyprint;
    } cases[] = {
        {entry("firstName", "Anna") + entry("lastName", "Berg") + entry("mail", "a@x"),
         "Anna Berg",
         "Anna Berg <a@x>"},
        {entry("company", "Acme") + entry("mail", "a@x"), "", "Acme <a@x>"},
        {entry("mail", "a@x"), "", "<a@x>"},
        {entry("firstName", "Anna") + entry("mail", ""), "Anna", "Anna"},
        {entry("lastName", "Berg"), "Berg", "Berg <No Mail>"},
        {entry("mail", ""), "", ""},
        {entry("firstName", "\u3000\n") + entry("company", " Acme\u00A0") + entry("mail", ""),
         "",
         "Acme"},
        {entry("firstName", "%@") + entry("lastName", "\u2028"), "%@", "%@ <No Mail>"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.entries);
        const auto document = documentOf("<dict>" + row.entries + "</dict>");
        const auto address = ExtensionAddress::initWithDictonary(document.root());
        EXPECT_EQ(address->fullName(), row.fullName);
        EXPECT_EQ(address->prettyprint(), row.prettyprint);
    }
    const auto draft = std::make_shared<ExtensionAddress>();
    EXPECT_EQ(draft->description(), "ExtensionAddress (null)");
    draft->setMail("a@x");
    EXPECT_EQ(draft->prettyprint(), "<a@x>");
}

TEST_F(AddressesAndGroupsTest, AddressWithAValueOfAWrongTypeKeepsWhatCameBefore) {
    const auto document =
        documentOf("<dict><key>firstName</key><true/><key>rank</key><integer>7</integer></dict>");
    const auto address = ExtensionAddress::initWithDictonary(document.root());
    EXPECT_EQ(address->mail(), "No Mail");
    EXPECT_EQ(address->firstName(), std::nullopt);
    EXPECT_EQ(address->rank(), 0);
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("ExtensionAddress initWithDictonary ")));
}

TEST_F(AddressesAndGroupsTest, GroupCountsTheAddressesThatItShows) {
    const struct {
        std::string entries, prettyprint;
        std::vector<std::string> log;
    } cases[] = {
        {"<key>addresses</key><array><dict/><dict/></array>", "No Name (2)", {}},
        {entry("name", "Family"), "Family", {}},
        {entry("name", "Family") + "<key>addresses</key><array><true/></array>",
         "Family (1)",
         {"ExtensionAddress"}},
        {entry("name", "Family") + "<key>addresses</key><true/>", "Family", {"ExtensionGroup"}},
        {"<key>idx</key><integer>1</integer>" + entry("name", "x"), "(null)", {"ExtensionGroup"}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.entries);
        const std::size_t before = log.lines().size();
        const auto document = documentOf("<dict>" + row.entries + "</dict>");
        const auto group = ExtensionGroup::initWithDictonary(document.root());
        EXPECT_EQ(group->prettyprint(), row.prettyprint);
        ASSERT_EQ(log.lines().size(), before + row.log.size());
        for (const std::string& record : row.log) {
            EXPECT_THAT(log.lines().back(), StartsWith(record + " initWithDictonary "));
        }
    }
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
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AddressesAndGroupsTest, MissingFolderIsMadeAndOnlyAFailureIsLogged) {
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    EXPECT_TRUE(platform::FileManager::folderExists(container.path("SharedData/Contacts")));
    EXPECT_THAT(log.lines(), IsEmpty());

    const std::string file = container.writeFile("no-folder", "");
    {
        const EnvironmentVariable below("QUILLET_CONTAINER", file + "/below");
        EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    }
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_THAT(ExtensionUtilities::AddressesAndGroups().addresses, IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("AddressesAndGroups "),
                            StartsWith("NSFileCoordinator AddressesAndGroups ")));
}

}  // namespace quillet::test
