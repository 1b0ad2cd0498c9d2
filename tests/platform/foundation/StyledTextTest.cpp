#include <gtest/gtest.h>

#include "platform/foundation/StyledText.h"

namespace quillet::test {

using platform::StyledText;

TEST(StyledText, PlainTextReadsTheSameAsHtml) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"a & <b> \"c\"", "a &amp; &lt;b&gt; &quot;c&quot;"},
        {"one\ntwo\r\nthree\rfour\n\n", "one<br/>two<br/>three<br/>four<br/><br/>"},
        {" a  b   c", "&#160;a &#160;b &#160;&#160;c"},
        {"\tx\n y", "&#160;&#160;&#160;&#160;x<br/>&#160;y"},
        {"Zo\u00EB \U0001F600", "Zo\u00EB \U0001F600"},
    };
    for (const auto& [text, html] : cases) {
        EXPECT_EQ((StyledText{text, {}}.htmlRepresentation()), html);
    }
    EXPECT_EQ((StyledText{"x", "<b>x</b>"}.htmlRepresentation()), "<b>x</b>");
}

}  // namespace quillet::test
