// The real programs, in processes of their own.

#include <QImage>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <list>
#include <nlohmann/json.hpp>
#include <tuple>
#include <unistd.h>

#include "model/ContainerPaths.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileDescriptor.h"
#include "tests/support/ProgramRun.h"
#include "tests/widget/StoreFixture.h"

namespace quillet::test {

using Json = nlohmann::json;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace std::string_literals;
using Words = std::vector<std::string>;

class QuilletTodayTest : public StoreFixture {
protected:
    static Outcome run(const Words& arguments) { return runProgram("quillet-today", arguments); }
    // Writes more messages than the panel shows, in two segments.
    void writeDemo() {
        std::string messages;
        for (int number = 1; number <= 20; ++number) {
            messages += messageXml(std::to_string(number), 1000 * number, number % 2 == 0 ? 1 : 11);
        }
        writeFile("a@x", "INBOX.plist", fileXml(messages));
    }

    TemporaryFolder config;
    EnvironmentVariable configVariable{"XDG_CONFIG_HOME", config.path()};
};

TEST_F(QuilletTodayTest, ListNeedsNeitherDisplayNorBus) {
    writeDemo();
    std::list<EnvironmentVariable> none;
    for (const char* variable :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS"}) {
        none.emplace_back(variable, std::nullopt);
    }
    const Outcome outcome = run({"list", "--json", "--segment=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const Json object = Json::parse(outcome.output);
    EXPECT_EQ(object["result"], "NCUpdateResultNewData");
    EXPECT_EQ(object["read"], 20);
    ASSERT_EQ(object["messages"].size(), 10);
    for (const Json& message : object["messages"]) {
        EXPECT_EQ(message["folderStandardId"], 1);
    }
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(QuilletTodayTest, SnapshotIsAsLargeAsItsRowsAtEveryScale) {
    writeDemo();
    const auto rows = Json::parse(run({"list", "--json"}).output)["messages"].size();
    const TemporaryFolder temporary;
    const EnvironmentVariable temporaryVariable("TMPDIR", temporary.path());
    const EnvironmentVariable noRuntime("XDG_RUNTIME_DIR", std::nullopt);
    const std::string file = config.path("picture.png");
    for (const char* scale : {"1", "1.25", "1.5", "2", "3"}) {
        SCOPED_TRACE(scale);
        const Outcome outcome = run({"snapshot", file, "--dark", "--scale", scale});
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        const QImage picture(QString::fromStdString(file));
        const double ratio = std::stod(scale);
        EXPECT_EQ(picture.width(), 320 * ratio);
        EXPECT_NEAR(picture.height(), (35 + 60 * static_cast<double>(rows)) * ratio, 1);
        EXPECT_LT(picture.pixelColor(1, picture.height() - 2).lightness(), 100);
    }
}

TEST_F(QuilletTodayTest, FailuresHaveTheirStatusAndCannotDisturbTheTerminal) {
    const std::string odd = config.path("no\x1b[31m/such/folder.png");
    const std::string file = container.writeFile("file", "");
    const std::tuple<Words, int, const char*, const char*> rows[] = {
        {{"snapshot", odd}, 1, "", "no [31m/such/folder.png"},
        {{"snapshot", container.path()}, 1, "", "Is a directory"},
        {{"list", "--container", file}, 1, "", "Not a directory"},
        {{"list", "--container", odd}, 0, "No messages\n", "no [31m/such/folder.png\" yet"},
    };
    for (const auto& [arguments, status, output, reason] : rows) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.output, output);
        EXPECT_THAT(outcome.errors, HasSubstr(reason));
    }
}

TEST_F(QuilletTodayTest, AllProgramsHelpAndComplainInOneForm) {
    for (const std::string name : {"quillet-today", "quillet-share", "quillet-mail-host"}) {
        SCOPED_TRACE(name);
        const Outcome help = runProgram(name, {"--help"});
        EXPECT_EQ(help.status, 0);
        std::size_t last = 0;
        for (const std::string& part : {"Usage: " + name + " ",
                                        "\nOptions:\n"s,
                                        "-h, --help "s,
                                        "-v, --version "s,
                                        std::string(ExtensionUtilities::kGroupIdentifier),
                                        "\nEnvironment:\n"s,
                                        "\n  QUILLET_CONTAINER "s,
                                        "\nExit status:\n  0  success\n  1  "s,
                                        "\n  2  wrong usage\n"s}) {
            last = help.output.find(part, last);
            ASSERT_NE(last, std::string::npos) << part;
        }
        EXPECT_EQ(runProgram(name, {"-h"}).output, help.output);
        EXPECT_THAT(runProgram(name, {"-v"}).output, StartsWith(name + " 0."));
        const std::string advice = "\nTry \"" + name + " --help\".\n";
        for (const std::string typed : {"--segmnt", "-x", "--hel"}) {
            const Outcome wrong = runProgram(name, {typed});
            EXPECT_EQ(wrong.status, 2);
            EXPECT_EQ(wrong.errors, name + ": there is no option \"" + typed + "\"" + advice);
        }
    }
}

TEST_F(QuilletTodayTest, OfSeveralStartsOnePanelStays) {
    writeDemo();
    for (const bool hasBus : {true, false}) {
        std::list<EnvironmentVariable> noBus;
        if (!hasBus) {
            noBus.emplace_back("DBUS_SESSION_BUS_ADDRESS", "disabled:");
        }
        std::array<QProcess, 3> panels;
        for (QProcess& panel : panels) {
            startProgram(panel, "quillet-today");
        }
        const auto isRunning = [](const QProcess& panel) {
            return panel.state() != QProcess::NotRunning;
        };
        ASSERT_TRUE(
            waitUntil([&] { return std::ranges::count_if(panels, isRunning) == 1; }, kProgramTime));
        for (QProcess& panel : panels) {
            if (isRunning(panel)) {
                panel.terminate();
                panel.waitForFinished(kProgramTime);
            } else {
                EXPECT_EQ(panel.exitCode(), hasBus ? 0 : 1);
                EXPECT_EQ(panel.readAllStandardError().contains("running already"), !hasBus);
            }
        }
    }
}

TEST_F(QuilletTodayTest, OnATerminalAProgramSaysWhatItWaitsFor) {
    writeDemo();
    const platform::FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY));
    ASSERT_TRUE(::grantpt(terminal.get()) == 0 && ::unlockpt(terminal.get()) == 0);
    const std::tuple<const char*, Words, std::string> cases[] = {
        {"quillet-today", {"list"}, "Today"},
        {"quillet-today", {"snapshot", config.path("a.png")}, "Accounts.plist"},
        {"quillet-share", {"--print", "--service=In", config.writeFile("a", "")}, "In"},
    };
    const std::string folder = container.path("SharedData");
    for (const auto& [program, arguments, item] : cases) {
        QProcess process;
        process.setStandardErrorFile(::ptsname(terminal.get()));
        const auto whileHeld = [&](const std::string& path) {
            startProgram(process, program, arguments);
            std::array<char, 1000> said{};
            EXPECT_GT(::read(terminal.get(), said.data(), said.size()), 0);
            EXPECT_THAT(said.data(), HasSubstr(program + std::string(": waiting for ")));
            EXPECT_THAT(said.data(), HasSubstr("\"" + item + "\"")) << path;
        };
        EXPECT_FALSE(
            platform::FileCoordinator(folder).coordinateWriting(folder + "/" + item, whileHeld));
        EXPECT_TRUE(process.waitForFinished(kProgramTime));
        EXPECT_EQ(process.exitCode(), 0) << program;
    }
}

}  // namespace quillet::test
