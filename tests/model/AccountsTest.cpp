#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/ExtensionUtilities.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class AccountsTest : public ::testing::Test {
protected:
    void write(std::string_view root) {
        container.writeFile("SharedData/Accounts.plist", xmlPropertyList(root));
    }

    TemporaryFolder container;
    TemporaryFolder runtime;
    EnvironmentVariable containerVariable{"QUILLET_CONTAINER", container.path()};
    EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
    EnvironmentVariable language{"LC_ALL", "C"};
    LogCapture log;
};

TEST_F(AccountsTest, FileThatHoldsNoListMeansNoAccountsAndNoLogLine) {
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    write("<dict><key>mail</key><string>a@x</string></dict>");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    container.writeFile("SharedData/Accounts.plist", "no property list");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AccountsTest, WithoutAContainerThereAreNoAccounts) {
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AccountsTest, CoordinationThatFailsIsLoggedAndGivesNoAccounts) {
    write("<array><dict/></array>");
    const std::string file = container.writeFile("no-folder", "");
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    EXPECT_THAT(ExtensionUtilities::Accounts(), IsEmpty());
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("NSFileCoordinator Accounts ")));
}

TEST_F(AccountsTest, MissingFieldsGetTheirDefaults) {
    write("<array><dict/><dict><key>mail</key><string>b@x</string></dict></array>");
    const auto accounts = ExtensionUtilities::Accounts();
    ASSERT_EQ(accounts.size(), 2U);
    EXPECT_EQ(accounts[0]->mail(), "No Mail");
    EXPECT_EQ(accounts[1]->description(), "ExtensionAccount b@x");
    EXPECT_EQ(accounts[1]->name(), "");
    EXPECT_EQ(accounts[1]->type(), 0);
    EXPECT_FALSE(accounts[1]->enabled());
    EXPECT_THAT(*accounts[1]->aliases(), IsEmpty());
}

TEST_F(AccountsTest, EnabledFollowsTheBooleanConversion) {
    struct Case {
        const char* value;
        bool enabled;
    };
    const Case cases[] = {
        {"<true/>", true},
        {"<false/>", false},
        {"<integer>1</integer>", true},
        {"<integer>0</integer>", false},
        {"<real>0.5</real>", true},
        {"<string>YES</string>", true},
        {"<string>no</string>", false},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.value);
        const auto document =
            documentOf("<dict><key>enabled</key>" + std::string(testCase.value) + "</dict>");
        const auto account = ExtensionAccount::initWithDictonary(document.root());
        EXPECT_EQ(account->enabled(), testCase.enabled);
    }
}

TEST_F(AccountsTest, AliasesAreReadInOrderWithTheirDefaults) {
    const auto document = documentOf(
        "<dict><key>aliases</key><array>"
        "<dict><key>mail</key><string>a@x</string><key>name</key><string>A</string></dict>"
        "<dict><key>account</key><string>b@x</string></dict>"
        "</array></dict>");
    const auto aliases = ExtensionAccount::initWithDictonary(document.root())->aliases();
    ASSERT_EQ(aliases->size(), 2U);
    EXPECT_EQ((*aliases)[0]->mail(), "a@x");
    EXPECT_EQ((*aliases)[0]->name(), "A");
    EXPECT_EQ((*aliases)[0]->account(), "");
    EXPECT_EQ((*aliases)[1]->mail(), "No Mail");
    EXPECT_EQ((*aliases)[1]->account(), "b@x");
}

TEST_F(AccountsTest, ValueOfAWrongTypeStopsTheRecordAloneAndIsLogged) {
    write(
        "<array>"
        "<dict><key>mail</key><string>a@x</string><key>type</key><array/>"
        "<key>enabled</key><true/></dict>"
        "<dict><key>mail</key><string>b@x</string><key>enabled</key><true/></dict>"
        "<string>no dictionary</string>"
        "</array>");
    const auto accounts = ExtensionUtilities::Accounts();
    ASSERT_EQ(accounts.size(), 3U);
    EXPECT_EQ(accounts[0]->mail(), "a@x");
    EXPECT_FALSE(accounts[0]->enabled());
    EXPECT_EQ(accounts[0]->aliases(), nullptr);
    EXPECT_TRUE(accounts[1]->enabled());
    EXPECT_EQ(accounts[2]->mail(), std::nullopt);
    EXPECT_EQ(accounts[2]->description(), "ExtensionAccount (null)");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAccount initWithDictonary "),
                            StartsWith("ExtensionAccount initWithDictonary ")));
}

TEST_F(AccountsTest, AliasesThatAreADictionaryGiveOneEmptyAliasAKey) {
    const auto document = documentOf(
        "<dict><key>aliases</key><dict><key>one</key><true/><key>two</key><true/></dict></dict>");
    const auto account = ExtensionAccount::initWithDictonary(document.root());
    ASSERT_EQ(account->aliases()->size(), 2U);
    EXPECT_EQ((*account->aliases())[0]->mail(), std::nullopt);
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("ExtensionAlias initWithDictonary "),
                            StartsWith("ExtensionAlias initWithDictonary ")));
}

}  // namespace quillet::test
