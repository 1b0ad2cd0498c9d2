#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/Accounts.h"
#include "model/RecordFields.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/PropertyLists.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AccountsTest : public ::testing::Test, protected OwnContainer {
protected:
    void write(std::string_view root) {
        container.writeFile("SharedData/Accounts.plist", xmlPropertyList(root));
    }

    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(AccountsTest, WithoutAListThereAreNoAccountsAndNoLogLine) {
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    write("<dict><key>mail</key><string>a@x</string></dict>");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    std::string aliases;
    for (std::size_t alias = 0; alias < kMaximumRecords; ++alias) {
        aliases += "<true/>";
    }
    write("<array><dict><key>aliases</key><array>" + aliases + "</array></dict></array>");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    container.writeFile("SharedData/Accounts.plist", "no property list");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AccountsTest, FieldsAreReadWithTheirDefaultsAndAWrongTypeStopsItsRecordAlone) {
    write(
        "<array>"
        "<dict><key>enabled</key><string>YES</string><key>aliases</key><array>"
        "<dict><key>mail</key><string>a@x</string><key>name</key><string>A</string></dict>"
        "<dict><key>account</key><string>b@x</string></dict></array></dict>"
        "<dict><key>mail</key><string>b@x</string><key>type</key><array/>"
        "<key>enabled</key><true/></dict>"
        "<dict><key>mail</key><string>c@x</string></dict>"
        "<string>no dictionary</string>"
        "</array>");
    const auto accounts = ExtensionUtilities::Accounts();
    ASSERT_EQ(accounts.size(), 4U);
    EXPECT_EQ(accounts[0]->mail(), "No Mail");
    EXPECT_TRUE(accounts[0]->enabled());
    const auto aliases = accounts[0]->aliases();
    ASSERT_EQ(aliases->size(), 2U);
    EXPECT_EQ((*aliases)[0]->mail(), "a@x");
    EXPECT_EQ((*aliases)[0]->name(), "A");
    EXPECT_EQ((*aliases)[0]->account(), "");
    EXPECT_EQ((*aliases)[1]->mail(), "No Mail");
    EXPECT_EQ((*aliases)[1]->account(), "b@x");

    EXPECT_EQ(accounts[1]->mail(), "b@x");
    EXPECT_FALSE(accounts[1]->enabled());
    EXPECT_EQ(accounts[1]->aliases(), nullptr);
    EXPECT_EQ(accounts[2]->description(), "ExtensionAccount c@x");
    EXPECT_EQ(accounts[2]->name(), "");
    EXPECT_EQ(accounts[2]->type(), 0);
    EXPECT_FALSE(accounts[2]->enabled());
    EXPECT_THAT(*accounts[2]->aliases(), IsEmpty());
    EXPECT_EQ(accounts[3]->description(), "ExtensionAccount (null)");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAccount initWithDictonary "),
                            StartsWith("ExtensionAccount initWithDictonary ")));
}

TEST_F(AccountsTest, AliasesThatAreADictionaryGiveOneEmptyAliasAKey) {
    const auto document = documentOf(
        "<dict><key>aliases</key><dict><key>one</key><true/><key>one</key><true/></dict></dict>");
    const auto account = ExtensionAccount::initWithDictonary(document.root());
    ASSERT_EQ(account->aliases()->size(), 1U);
    EXPECT_EQ((*account->aliases())[0]->mail(), std::nullopt);
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("ExtensionAlias initWithDictonary ")));
}

}  // namespace quillet::test
