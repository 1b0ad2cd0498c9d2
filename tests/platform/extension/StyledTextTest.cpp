#include <gtest/gtest.h>

#include "platform/extension/StyledText.h"

namespace quillet::test {

using platform::StyledText;

TEST(StyledText, PlainTextReadsTheSameAsHtmlAndEachLinkIsOneAnchor) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"a & <b> \"c\"", "a &amp; &lt;b&gt; &quot;c&quot;"},
        {"one\ntwo\r\nthree\rfour\n\n", "one<br/>two<br/>three<br/>four<br/><br/>"},
        {" a  b   c", "&#160;a &#160;b &#160;&#160;c"},
        {"\tx\n y", "&#160;&#160;&#160;&#160;x<br/>&#160;y"},
        {"Zo\u00EB \U0001F600", "Zo\u00EB \U0001F600"},
        {"see http://a.b?c=1&d, \nhttp://a.b?c=1&d  www.a.example.",
         "see <a href=\"http://a.b?c=1&amp;d\">http://a.b?c=1&amp;d</a>, <br/>"
         "<a href=\"http://a.b?c=1&amp;d\">http://a.b?c=1&amp;d</a> &#160;"
         "<a href=\"http://www.a.example\">www.a.example</a>."},
    };
    for (const auto& [text, html] : cases) {
        EXPECT_EQ(StyledText::withLinks(text).htmlRepresentation(), html);
        EXPECT_EQ(StyledText::withLinks(text).plainString(), text);
    }
    EXPECT_EQ((StyledText{"x", "<b>x</b>"}.htmlRepresentation()), "<b>x</b>");
}

TEST(StyledText, HtmlAloneReadsAsItsTextOnOneLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"<p>a <B>b</B>c</p>\n<p>d<br>e</p>", "a bc d e"},
        {"<!DOCTYPE html><html><HEAD><title>x</title></HEAD><body>a<!-- > -->b</body>", "ab"},
        {"a<style>p > b {}</p></style>&lt;&amp;amp;&#228;&#xE4;&nbsp;&#160;&quot;",
         "a <&amp;ää \""},
        {"I <3 a<b & c &#0; &auml; &", "I <3 a"},
        {"&#0; &auml; &#x", "&#0; &auml; &#x"},
        {"a<script>b", "a"},
        {"a<!-- b", "a"},
        {"<", "<"},
        {"<p>", ""},
    };
    for (const auto& [html, text] : cases) {
        EXPECT_EQ((StyledText{{}, html}.plainString()), text) << html;
    }
}

}  // namespace quillet::test
