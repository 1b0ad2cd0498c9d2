#include <gtest/gtest.h>

#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"
#include "tests/support/LogCapture.h"

namespace quillet::test {
namespace {

using platform::formatText;

TEST(TextFormat, ArgumentsTakeTheirPlacesInOrder) {
    EXPECT_EQ(formatText("%@ is %lu of %ld", {"a", "1", "-2"}), "a is 1 of -2");
    EXPECT_EQ(formatText("%@ and %@", {"%@"}), "%@ and (null)");
    EXPECT_EQ(formatText("surplus", {"a"}), "surplus");
    EXPECT_EQ(formatText("100%% %d %", {"a"}), "100% %d %");
}

TEST(Log, ASinkGetsTheLineAsItWasFormed) {
    const LogCapture log;
    platform::Log::write("two\nlines %@", {platform::posixError(2, "/x").description()});
    EXPECT_EQ(log.lines(), std::vector<std::string>{"two\nlines /x: No such file or directory"});
}

TEST(Log, StandardErrorGetsOneLineWhateverTheTextHolds) {
    testing::internal::CaptureStderr();
    platform::Log::write("a\nb\x1b[31m%@",
                         {"\r\x7f é\u009B1m \u202Etxt\u2069 日 \x9B"
                          "J \xE2\x80"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "a b [31m   é 1m  txt  日 \uFFFDJ \uFFFD\uFFFD\n");
}

}  // namespace
}  // namespace quillet::test
