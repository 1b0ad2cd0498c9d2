#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "app/CommandLine.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::variant<CommandLine, EarlyExit> readWords(std::vector<std::string> words) {
    words.insert(words.begin(), "quillet-today");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    return readCommandLine(arguments);
}

}  // namespace

TEST(CommandLine, WrongUsageEndsWithStatusTwoAndSaysWhatIsWrong) {
    struct Case {
        std::vector<std::string> words;
        const char* complaint;
    };
    const Case cases[] = {
        {{"show"}, "there is no command \"show\""},
        {{"list", "more"}, "\"more\" is one argument too many"},
        {{"snapshot"}, "needs the name of the file"},
        {{"snapshot", "a.png", "b.png"}, "\"b.png\""},
        {{"--unknown"}, "unknown"},
        {{"--container"}, "container"},
        {{"list", "--segment", "two"}, "whole number"},
        {{"list", "--segment", "9223372036854775808"}, "whole number"},
        {{"snapshot", "a.png", "--scale", "nan"}, "--scale takes"},
        {{"snapshot", "a.png", "--scale", "0"}, "--scale takes"},
        {{"--dark", "--light"}, "choose one"},
        {{"--json"}, "--json goes with list"},
        {{"list", "--dark"}, "--dark and --light go with"},
        {{"list", "--scale", "2"}, "--scale goes with snapshot"},
        {{"--segment", "1"}, "--segment goes with"},
    };
    for (const Case& testCase : cases) {
        const auto result = readWords(testCase.words);
        ASSERT_TRUE(std::holds_alternative<EarlyExit>(result)) << testCase.complaint;
        const EarlyExit& exit = std::get<EarlyExit>(result);
        EXPECT_EQ(exit.status, 2);
        EXPECT_THAT(exit.text, StartsWith("quillet-today: "));
        EXPECT_THAT(exit.text, HasSubstr(testCase.complaint));
        EXPECT_THAT(exit.text, HasSubstr("--help"));
    }
}

TEST(CommandLine, HelpAndVersionEndWell) {
    for (const auto& [word, text] : {std::pair("--help", "Usage: quillet-today [options]"),
                                     std::pair("--version", "quillet-today 0.")}) {
        const auto result = readWords({word});
        ASSERT_TRUE(std::holds_alternative<EarlyExit>(result));
        EXPECT_EQ(std::get<EarlyExit>(result).status, 0);
        EXPECT_THAT(std::get<EarlyExit>(result).text, HasSubstr(text));
    }
}

TEST(CommandLine, OptionsMayStandOnEitherSideOfTheCommand) {
    const auto result = readWords({"--container", "box", "list", "--json", "--segment", "-3"});
    ASSERT_TRUE(std::holds_alternative<CommandLine>(result));
    const auto& line = std::get<CommandLine>(result);
    EXPECT_EQ(line.command, CommandLine::Command::List);
    EXPECT_TRUE(line.json);
    EXPECT_EQ(line.segment, -3);
    EXPECT_EQ(line.container, (std::filesystem::current_path() / "box").string());
    EXPECT_EQ(line.look, std::nullopt);
}

TEST(CommandLine, RelativeContainerNeedsAWorkingFolder) {
    const std::filesystem::path before = std::filesystem::current_path();
    {
        const TemporaryFolder gone;
        std::filesystem::current_path(gone.path());
    }
    EXPECT_TRUE(std::holds_alternative<EarlyExit>(readWords({"list", "--container", "box"})));
    std::filesystem::current_path(before);
}

TEST(CommandLine, PathsKeepEveryByte) {
    const std::string bytes = "/tmp/\xFF\xC3\xA9";
    const auto result = readWords({"--container", bytes, "snapshot", bytes, "--dark"});
    ASSERT_TRUE(std::holds_alternative<CommandLine>(result));
    const auto& line = std::get<CommandLine>(result);
    EXPECT_EQ(line.container, bytes);
    EXPECT_EQ(line.picture, bytes);
    EXPECT_EQ(line.look, platform::Look::Dark);
    EXPECT_EQ(std::get<CommandLine>(readWords({"--container", ""})).container, "");
}

}  // namespace quillet::test
