#include <gtest/gtest.h>

#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"
#include "tests/support/LogCapture.h"

namespace quillet::test {

using platform::formatText;

TEST(TextFormat, ArgumentsTakeTheirPlacesInOrder) {
    EXPECT_EQ(formatText("%@ is %lu of %ld, %@", {"%@", "1", "-2"}), "%@ is 1 of -2, (null)");
    EXPECT_EQ(formatText("100%% %d %", {"surplus"}), "100% %d %");
}

TEST(Log, StandardErrorGetsOneLineWhateverTheTextHoldsAndASinkTheTextAsItIs) {
    testing::internal::CaptureStderr();
    platform::Log::write("a\nb\x1b[31m%@",
                         {"\r\x7f é\u009B1m \u202Etxt\u2069 日 \x9B"
                          "J \xE2\x80"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "a b [31m   é 1m  txt  日 \uFFFDJ \uFFFD\uFFFD\n");
    const LogCapture log;
    platform::Log::write("two\nlines %@", {"\x1b"});
    EXPECT_EQ(log.lines(), std::vector<std::string>{"two\nlines \x1b"});
}

}  // namespace quillet::test
