#include <gtest/gtest.h>

#include "platform/foundation/Bundle.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::Bundle;

std::string translations(const std::string& entries) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>";
}

std::string entry(const std::string& key, const std::string& text) {
    return "<key>" + key + "</key><string>" + text + "</string>";
}

class BundleTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    EnvironmentVariable resources_{"QUILLET_RESOURCES", folder_.path()};
};

TEST_F(BundleTest, ATextIsThatOfTheFirstLanguageThatHasOne) {
    folder_.writeFile("translations/de.plist",
                      translations(entry("Inbox", "Eingang") + entry("Memo", "Notiz")));
    folder_.writeFile("translations/pt.plist",
                      translations(entry("Inbox", "Entrada") + entry("Memo", "Nota")));
    folder_.writeFile("translations/pt_BR.plist", translations(entry("Inbox", "Caixa")));
    const struct {
        const char* name;
        std::optional<std::string> language, all, messages, lang;
        const char* inbox;
        const char* memo;
    } cases[] = {
        {"LANG", std::nullopt, std::nullopt, std::nullopt, "de_AT.UTF-8@x", "Eingang", "Notiz"},
        {"country first", {}, {}, {}, "pt_BR.UTF-8", "Caixa", "Nota"},
        {"LC_MESSAGES over LANG", {}, {}, "pt_PT", "de_DE", "Entrada", "Nota"},
        {"LC_ALL over all", {}, "de_DE", "pt_PT", "pt_PT", "Eingang", "Notiz"},
        {"an empty variable is none", {}, "", "", "de", "Eingang", "Notiz"},
        {"LANGUAGE over all", "xx:pt_BR:de", "de_DE.UTF-8", {}, {}, "Caixa", "Nota"},
        {"LANGUAGE before the locale", "xx", {}, {}, "de", "Eingang", "Notiz"},
        {"LANGUAGE without a locale", "de", {}, "C.UTF-8", "de_DE", "Inbox", "Memo"},
        {"English needs no translation", "en_US:de", {}, {}, "de", "Inbox", "Memo"},
        {"POSIX", {}, "POSIX", {}, "de", "Inbox", "Memo"},
        {"nothing", {}, {}, {}, {}, "Inbox", "Memo"},
        {"no way out of the folder", "../translations/de", {}, {}, "xx", "Inbox", "Memo"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const EnvironmentVariable language("LANGUAGE", row.language);
        const EnvironmentVariable all("LC_ALL", row.all);
        const EnvironmentVariable messages("LC_MESSAGES", row.messages);
        const EnvironmentVariable lang("LANG", row.lang);
        const Bundle bundle;
        EXPECT_EQ(bundle.localizedString("Inbox"), row.inbox);
        EXPECT_EQ(bundle.localizedString("Memo", "fallback"),
                  std::string_view(row.memo) == "Memo" ? "fallback" : row.memo);
    }
}

TEST_F(BundleTest, TheEmptyKeyGivesTheFallback) {
    EXPECT_EQ(Bundle().localizedString(""), "");
    EXPECT_EQ(Bundle().localizedString("", "fallback"), "fallback");
}

TEST_F(BundleTest, ABadTranslationIsLoggedAndWithoutEffect) {
    const EnvironmentVariable all("LC_ALL", "de_DE.UTF-8");
    for (const std::string& bad :
         {std::string(), std::string("<plist><dict>"), std::string("<plist><array/></plist>")}) {
        SCOPED_TRACE(bad);
        folder_.writeFile("translations/de.plist", bad);
        const LogCapture log;
        EXPECT_EQ(Bundle().localizedString("Inbox"), "Inbox");
        EXPECT_EQ(log.lines().size(), 1U);
    }
    const LogCapture log;
    folder_.writeFile("translations/de.plist",
                      translations("<key>Inbox</key><true/>" + entry("Memo", "Notiz")));
    EXPECT_EQ(Bundle().localizedString("Inbox"), "Inbox");
    EXPECT_EQ(Bundle().localizedString("Memo"), "Notiz");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(BundleTest, TheIdentifierFollowsTheEnvironmentAtEachCall) {
    const Bundle bundle;
    const std::pair<std::optional<std::string>, std::optional<std::string>> cases[] = {
        {std::nullopt, "it.tarno.quillet.today"},
        {"it.tarno.quillet.beta.today", "it.tarno.quillet.beta.today"},
        {"", std::nullopt},
    };
    for (const auto& [given, expected] : cases) {
        const EnvironmentVariable variable("QUILLET_BUNDLE_IDENTIFIER", given);
        EXPECT_EQ(bundle.identifier(), expected);
    }
}

TEST_F(BundleTest, AResourceThatDoesNotExistIsNone) {
    folder_.writeFile("images/w_reply.png", "");
    EXPECT_EQ(Bundle().pathForResource("images/w_reply.png"), folder_.path("images/w_reply.png"));
    EXPECT_EQ(Bundle().pathForResource("images/missing.png"), std::nullopt);
}

}  // namespace
}  // namespace quillet::test
