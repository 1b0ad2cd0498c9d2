#include <filesystem>

#include "app/CommandLine.h"
#include "tests/support/CommandLineWords.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

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
                         {{"--dark", "--light"}, "choose one"},
                         {{"--json"}, "\"--json\" goes with"},
                         {{"list", "--dark"}, "\"--dark\" and \"--light\" go with"},
                         {{"list", "--scale", "2"}, "\"--scale\" goes with"},
                         {{"--segment", "1"}, "\"--segment\" goes with"},
                     });
}

TEST(CommandLine, OptionsMayStandOnEitherSideOfTheCommandAndPathsKeepEveryByte) {
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
}

TEST(CommandLine, RelativeContainerNeedsAWorkingFolder) {
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
