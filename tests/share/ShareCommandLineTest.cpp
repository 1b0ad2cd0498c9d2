#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "share/ShareCommandLine.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::variant<ShareCommandLine, ShareEarlyExit> read(std::vector<std::string> words) {
    words.insert(words.begin(), "quillet-share");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    return readShareCommandLine(arguments);
}

TEST(ShareCommandLine, OptionsAndItemsMayStandInAnyOrder) {
    const auto result = read({"a \xFF",
                              "--title=T",
                              "--to",
                              "a@x",
                              "-",
                              "--to=b@x",
                              "--print",
                              "--service",
                              "W",
                              "--command=send",
                              "--html",
                              "--",
                              "--text"});
    ASSERT_TRUE(std::holds_alternative<ShareCommandLine>(result));
    const auto& line = std::get<ShareCommandLine>(result);
    EXPECT_THAT(line.items, ElementsAre("a \xFF", "-", "--text"));
    EXPECT_THAT(line.recipients, ElementsAre("a@x", "b@x"));
    EXPECT_EQ(line.title, "T");
    EXPECT_EQ(line.service, "W");
    EXPECT_EQ(line.command, "send");
    EXPECT_EQ(line.textKind, TextKind::Html);
    EXPECT_TRUE(line.print);

    const auto plain = std::get<ShareCommandLine>(read({}));
    EXPECT_THAT(plain.items, IsEmpty());
    EXPECT_EQ(plain.command, "compose");
    EXPECT_EQ(plain.service, std::nullopt);
    EXPECT_EQ(plain.title, std::nullopt);
}

TEST(ShareCommandLine, WrongUsageNamesTheWordThatIsWrong) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"x", "--titel=T"}, "\"--titel=T\""},
        {{"-x"}, "\"-x\""},
        {{"x", "--to"}, "\"--to\" needs a value"},
        {{"--html=1"}, "\"--html=1\""},
        {{"--html", "--text"}, "one of --html and --text"},
        {{"--command", "two words"}, "\"two words\""},
    };
    for (const auto& [words, reason] : cases) {
        SCOPED_TRACE(reason);
        const auto result = read(words);
        ASSERT_TRUE(std::holds_alternative<ShareEarlyExit>(result));
        EXPECT_EQ(std::get<ShareEarlyExit>(result).status, 2);
        EXPECT_THAT(std::get<ShareEarlyExit>(result).text, HasSubstr(reason));
    }
    EXPECT_EQ(std::get<ShareEarlyExit>(read({"--help"})).status, 0);
}

}  // namespace
}  // namespace quillet::test
