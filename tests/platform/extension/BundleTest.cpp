#include <gtest/gtest.h>

#include "platform/extension/Bundle.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::Bundle;

std::string translations(const std::string& inbox, const std::string& more = {}) {
    return xmlPropertyList("<dict><key>Inbox</key><string>" + inbox + "</string>" + more +
                           "</dict>");
}

class BundleTest : public testing::Test {
protected:
    TemporaryFolder folder_;
    EnvironmentVariable resources_{"QUILLET_RESOURCES", folder_.path()};
};

TEST_F(BundleTest, ATextIsThatOfTheFirstLanguageThatHasOne) {
    const std::string memo = "<key>Memo</key><string>";
    folder_.writeFile("translations/de.plist", translations("Eingang", memo + "Notiz</string>"));
    folder_.writeFile("translations/pt.plist", translations("Entrada", memo + "Nota</string>"));
    folder_.writeFile("translations/pt_BR.plist", translations("Caixa", "<key>Memo</key><true/>"));
    const struct {
        const char* name;
        std::optional<std::string> language, all, messages, lang;
        const char* inbox;
        const char* memo;
    } cases[] = {
        {"LANG", {}, {}, {}, "de_AT.UTF-8@x", "Eingang", "Notiz"},
        {"country first", {}, {}, {}, "pt_BR.UTF-8", "Caixa", "Nota"},
        {"LC_ALL over all", {}, "de_DE", "pt_PT", "pt_PT", "Eingang", "Notiz"},
        {"an empty variable is none", {}, "", "pt_PT", "de", "Entrada", "Nota"},
        {"LANGUAGE over all", "xx:pt_BR:de", "de_DE.UTF-8", {}, {}, "Caixa", "Nota"},
        {"LANGUAGE without a locale", "de", {}, "C.UTF-8", "de_DE", "Inbox", "Memo"},
        {"English needs no translation", "en_US:de", {}, {}, "de", "Inbox", "Memo"},
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

TEST_F(BundleTest, ABadTranslationIsLoggedAndWithoutEffect) {
    const EnvironmentVariable all("LC_ALL", "de_DE.UTF-8");
    for (const char* bad : {"", "<plist><dict>", "<plist><array/></plist>"}) {
        SCOPED_TRACE(bad);
        folder_.writeFile("translations/de.plist", bad);
        const LogCapture log;
        EXPECT_EQ(Bundle().localizedString("Inbox"), "Inbox");
        EXPECT_EQ(log.lines().size(), 1U);
    }
}

}  // namespace
}  // namespace quillet::test
