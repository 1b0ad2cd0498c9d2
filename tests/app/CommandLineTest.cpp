#include <filesystem>
#include <gmock/gmock.h>

#include "share/ShareCommandLine.h"

#include "app/CommandLine.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

using Words = std::vector<std::string>;

// What `read` makes of a command line of these words after the program's name.
template <typename Read>
auto readWords(Read read, Words words) {
    words.insert(words.begin(), "program");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    return read(arguments);
}

template <typename Read>
void expectWrongUsage(Read read, const std::vector<std::pair<Words, const char*>>& cases) {
    for (const auto& [words, complaint] : cases) {
        const auto exit = std::get<platform::EarlyExit>(readWords(read, words));
        EXPECT_EQ(exit.status, 2);
        EXPECT_THAT(exit.text, testing::HasSubstr(complaint));
    }
}

TEST(CommandLine, WrongUsageEndsWithStatusTwoAndSaysWhatIsWrong) {
    expectWrongUsage(readCommandLine,
                     {
                         {{"show"}, "quillet-today: there is no command \"show\""},
                         {{"list", "more"}, "\"more\" is one argument too many"},
                         {{"snapshot"}, "needs the name of the file"},
                         {{"snapshot", "a.png", "b.png"}, "\"b.png\""},
                         {{"list", "--segment", "two"}, "whole number"},
                         {{"list", "--segment", "9223372036854775808"}, "whole number"},
                         {{"snapshot", "a.png", "--scale", "nan"}, "\"--scale\" takes"},
                         {{"snapshot", "a.png", "--scale", "0"}, "\"--scale\" takes"},
                         {{"snapshot", "a.png", "--scale", "8.1"}, "\"--scale\" takes"},
                         {{"--dark", "--light"}, "choose one"},
                         {{"--json"}, "\"--json\" goes with"},
                         {{"list", "--dark"}, "\"--dark\" and \"--light\" go with"},
                         {{"list", "--scale", "2"}, "\"--scale\" goes with"},
                         {{"--segment", "1"}, "\"--segment\" goes with"},
                     });
    expectWrongUsage(readShareCommandLine,
                     {
                         {{"x", "-vx"}, "\"-x\""},
                         {{"x", "--to"}, "\"--to\" needs a value"},
                         {{"--html=1"}, "\"--html\" takes no value"},
                         {{"--html", "--text"}, "one of \"--html\" and \"--text\""},
                         {{"--command", "two words"}, "\"two words\""},
                         {{"--command="}, "not \"\""},
                     });
}

TEST(CommandLine, OptionsStandAnywhereAndPathsKeepEveryByteAndRelativeOnesNeedAFolder) {
    const auto list = std::get<CommandLine>(
        readWords(readCommandLine, {"--container", "box", "list", "--json", "--segment=-3"}));
    EXPECT_EQ(list.command, CommandLine::Command::List);
    EXPECT_TRUE(list.json);
    EXPECT_EQ(list.segment, -3);
    EXPECT_EQ(list.container, (std::filesystem::current_path() / "box").string());
    EXPECT_EQ(list.look, std::nullopt);
    const std::string bytes = "/tmp/\xFF\xC3\xA9";
    const auto picture = std::get<CommandLine>(
        readWords(readCommandLine, {"--container", bytes, "snapshot", bytes, "--dark"}));
    EXPECT_EQ(picture.container, bytes);
    EXPECT_EQ(picture.picture, bytes);
    EXPECT_EQ(picture.look, platform::Look::Dark);
    EXPECT_EQ(std::get<CommandLine>(readWords(readCommandLine, {"--container", ""})).container, "");

    const std::filesystem::path before = std::filesystem::current_path();
    {
        const TemporaryFolder gone;
        std::filesystem::current_path(gone.path());
    }
    EXPECT_TRUE(std::holds_alternative<platform::EarlyExit>(
        readWords(readCommandLine, {"list", "--container", "box"})));
    std::filesystem::current_path(before);
}

}  // namespace quillet::test
