#include <gtest/gtest.h>

#include "platform/extension/Bundle.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::Bundle;

class BundleTest : public testing::Test {
protected:
    void translate(const std::string& language, const std::string& inbox, const std::string& memo) {
        folder_.writeFile("translations/" + language + ".plist",
                          xmlPropertyList("<dict><key>Inbox</key><string>" + inbox +
                                          "</string><key>Memo</key>" + memo + "</dict>"));
    }

    TemporaryFolder folder_;
    EnvironmentVariable resources_{"QUILLET_RESOURCES", folder_.path()};
};

TEST_F(BundleTest, ATextIsThatOfTheFirstLanguageThatHasOne) {
    translate("de", "Eingang", "<string>Notiz</string>");
    translate("pt", "Entrada", "<string>Nota</string>");
    translate("pt_BR", "Caixa", "<true/>");
    // LANGUAGE, LC_ALL, LC_MESSAGES, LANG and the two texts.
    const std::optional<std::string> cases[][6] = {
        {{}, {}, {}, "de_AT.UTF-8@x", "Eingang", "Notiz"},
        {{}, {}, {}, "pt_BR.UTF-8", "Caixa", "Nota"},
        {{}, "de_DE", "pt_PT", "pt_PT", "Eingang", "Notiz"},
        {{}, "", "pt_PT", "de", "Entrada", "Nota"},
        {"xx:pt_BR:de", "de_DE.UTF-8", {}, {}, "Caixa", "Nota"},
        {"de", {}, "C.UTF-8", "de_DE", "Inbox", "fallback"},
        {"en_US:de", {}, {}, "de", "Inbox", "fallback"},
        {"../translations/de", {}, {}, "xx", "Inbox", "fallback"},
    };
    for (const auto& [languages, locale, ofMessages, byDefault, inbox, memo] : cases) {
        const EnvironmentVariable language("LANGUAGE", languages);
        const EnvironmentVariable all("LC_ALL", locale);
        const EnvironmentVariable messages("LC_MESSAGES", ofMessages);
        const EnvironmentVariable lang("LANG", byDefault);
        const Bundle bundle;
        EXPECT_EQ(bundle.localizedString("Inbox"), inbox);
        EXPECT_EQ(bundle.localizedString("Memo", "fallback"), memo);
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
