#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "share/ShareCommandLine.h"

namespace quillet::test {

TEST(ShareCommandLine, WrongUsageNamesTheWordThatIsWrong) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"x", "-vx"}, "\"-x\""},
        {{"x", "--to"}, "\"--to\" needs a value"},
        {{"--html=1"}, "\"--html\" takes no value"},
        {{"--html", "--text"}, "one of \"--html\" and \"--text\""},
        {{"--command", "two words"}, "\"two words\""},
        {{"--command", "a/b"}, "\"a/b\""},
        {{"--command="}, "not \"\""},
    };
    for (auto [words, reason] : cases) {
        SCOPED_TRACE(reason);
        words.insert(words.begin(), "quillet-share");
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        const auto result = readShareCommandLine(arguments);
        ASSERT_TRUE(std::holds_alternative<platform::EarlyExit>(result));
        EXPECT_EQ(std::get<platform::EarlyExit>(result).status, 2);
        EXPECT_THAT(std::get<platform::EarlyExit>(result).text, testing::HasSubstr(reason));
    }
}

}  // namespace quillet::test
