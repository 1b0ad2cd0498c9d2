#include <gmock/gmock.h>

#include "platform/extension/Bundle.h"
#include "platform/extension/StyledText.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

using platform::Bundle;
using platform::StyledText;

class BundleTest : public testing::Test {
protected:
    void translate(const std::string& language, const std::string& bytes) const {
        folder_.writeFile("translations/" + language + ".plist", bytes);
    }

    TemporaryFolder folder_;
    EnvironmentVariable resources_{"QUILLET_RESOURCES", folder_.path()};
};

TEST_F(BundleTest, ATextIsThatOfTheFirstLanguageThatHasOne) {
    for (const auto& [language, inbox, memo] :
         {std::array{"de", "Eingang", "<string>Notiz</string>"},
          {"pt", "Entrada", "<string>Nota</string>"},
          {"pt_BR", "Caixa", "<true/>"}}) {
        translate(language,
                  xmlPropertyList("<dict><key>Inbox</key><string>" + std::string(inbox) +
                                  "</string><key>Memo</key>" + memo + "</dict>"));
    }
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
        EXPECT_EQ(Bundle().localizedString("Inbox"), inbox);
        EXPECT_EQ(Bundle().localizedString("Memo", "fallback"), memo);
    }
}

TEST_F(BundleTest, ABadTranslationIsLoggedAndWithoutEffect) {
    const EnvironmentVariable all("LC_ALL", "de_DE.UTF-8");
    for (const char* bad : {"", "<plist><dict>", "<plist><array/></plist>"}) {
        translate("de", bad);
        const LogCapture log;
        EXPECT_EQ(Bundle().localizedString("Inbox"), "Inbox");
        EXPECT_THAT(log.lines(), testing::SizeIs(1)) << bad;
    }
}

TEST(StyledText, PlainTextReadsTheSameAsHtmlAndEachLinkIsOneAnchor) {
    const std::pair<const char*, const char*> cases[] = {
        {"a & <b> \"c\"", "a &amp; &lt;b&gt; &quot;c&quot;"},
        {"one\ntwo\r\nthree\rfour\n\n", "one<br/>two<br/>three<br/>four<br/><br/>"},
        {" a  b   c\tx\n y", "&#160;a &#160;b &#160;&#160;c&#160;&#160;&#160;&#160;x<br/>&#160;y"},
        {"Zo\u00EB \U0001F600", "Zo\u00EB \U0001F600"},
        {"http://a.b?c=1&d  www.a.example.",
         "<a href=\"http://a.b?c=1&amp;d\">http://a.b?c=1&amp;d</a> &#160;"
         "<a href=\"http://www.a.example\">www.a.example</a>."},
    };
    for (const auto& [text, html] : cases) {
        EXPECT_EQ(StyledText::withLinks(text).htmlRepresentation(), html);
        EXPECT_EQ(StyledText::withLinks(text).plainString(), text);
    }
}

TEST(StyledText, HtmlAloneReadsAsItsTextOnOneLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"<p>a <B>b</B>c</p>\n<p>d<br>e</p>", "a bc d e"},
        {"<!DOCTYPE html><html><HEAD><title>x</title></HEAD><body>a<!-- > -->b</body>", "ab"},
        {"a<style>p > b {}</p></style>&lt;&amp;amp;&#228;&#xE4;&nbsp;&quot;", "a <&amp;ää \""},
        {"I <3 a<b & c &#0; &auml; &", "I <3 a"},
        {"&#0; &auml; &#x <", "&#0; &auml; &#x <"},
        {"a<script>b", "a"},
        {"a<!-- b", "a"},
    };
    for (const auto& [html, text] : cases) {
        EXPECT_EQ((StyledText{{}, html}.plainString()), text) << html;
    }
}

}  // namespace
}  // namespace quillet::test
