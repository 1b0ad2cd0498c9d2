// The real program, in processes of its own, over a container that the sample host has written.

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
#include "tests/support/OwnContainer.h"
#include "tests/support/ProgramRun.h"

namespace quillet::test {

using Json = nlohmann::json;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

class QuilletTodayTest : public ::testing::Test, protected OwnContainer {
protected:
    static Outcome run(const Words& arguments) { return runProgram("quillet-today", arguments); }
    void writeDemo() const {
        ASSERT_EQ(runProgram("quillet-sample-host", {"write", container.path()}).status, 0);
    }

    static constexpr int kLimit = 30'000;  // milliseconds

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
    EXPECT_GT(object["read"], 10);
    ASSERT_FALSE(object["messages"].empty());
    double newest = object["messages"][0]["date"];
    for (const Json& message : object["messages"]) {
        EXPECT_EQ(message["folderStandardId"], 1);
        EXPECT_LE(message["date"], newest);
        newest = message["date"];
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
    const struct {
        Words arguments;
        int status;
        const char* output;
        const char* reason;
    } rows[] = {
        {{"snapshot", odd}, 1, "", "no [31m/such/folder.png"},
        {{"snapshot", container.path()}, 1, "", "Is a directory"},
        {{"list", "--container", container.writeFile("file", "")}, 1, "", "Not a directory"},
        {{"list", "--container", odd}, 0, "No messages\n", "no [31m/such/folder.png\" yet"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_EQ(outcome.output, row.output);
        EXPECT_THAT(outcome.errors, HasSubstr(row.reason));
    }
}

TEST_F(QuilletTodayTest, AllProgramsHelpAndComplainInOneForm) {
    for (const std::string name : {"quillet-today", "quillet-share", "quillet-sample-host"}) {
        SCOPED_TRACE(name);
        const Outcome help = runProgram(name, {"--help"});
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.output.rfind("Usage: " + name + " ", 0), 0U);
        std::size_t last = 0;
        for (const char* part : {"\nOptions:\n",
                                 "-h, --help ",
                                 "-v, --version ",
                                 ExtensionUtilities::kGroupIdentifier.data(),
                                 "\nEnvironment:\n",
                                 "\n  QUILLET_CONTAINER ",
                                 "\nExit status:\n  0  success\n  1  ",
                                 "\n  2  wrong usage\n"}) {
            const std::size_t found = help.output.find(part, last);
            ASSERT_NE(found, std::string::npos) << part;
            last = found;
        }
        EXPECT_EQ(runProgram(name, {"-h"}).output, help.output);
        EXPECT_EQ(runProgram(name, {"-v"}).output.rfind(name + " 0.", 0), 0U);
        for (const char* typed : {"--segmnt", "-x", "--hel"}) {
            const Outcome wrong = runProgram(name, {typed});
            EXPECT_EQ(wrong.status, 2);
            EXPECT_EQ(
                wrong.errors,
                name + ": there is no option \"" + typed + "\"\nTry \"" + name + " --help\".\n");
        }
    }
}

TEST_F(QuilletTodayTest, OfSeveralStartsOnePanelStays) {
    writeDemo();
    for (const bool hasBus : {true, false}) {
        std::optional<EnvironmentVariable> noBus;
        if (!hasBus) {
            noBus.emplace("DBUS_SESSION_BUS_ADDRESS", "disabled:");
        }
        std::array<QProcess, 3> panels;
        for (QProcess& panel : panels) {
            panel.start(QStringLiteral(QUILLET_BIN "/quillet-today"), QStringList());
        }
        const auto isRunning = [](const QProcess& panel) {
            return panel.state() != QProcess::NotRunning;
        };
        ASSERT_TRUE(
            waitUntil([&] { return std::ranges::count_if(panels, isRunning) == 1; }, kLimit));
        for (QProcess& panel : panels) {
            if (isRunning(panel)) {
                panel.terminate();
                panel.waitForFinished(kLimit);
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
        process.setStandardErrorFile(QString::fromLocal8Bit(::ptsname(terminal.get())));
        const auto whileHeld = [&](const std::string& /*path*/) {
            process.start(QStringLiteral(QUILLET_BIN "/") + QLatin1String(program),
                          wordsOf(arguments));
            std::array<char, 1000> said{};
            EXPECT_GT(::read(terminal.get(), said.data(), said.size()), 0);
            EXPECT_THAT(said.data(), HasSubstr(program + std::string(": waiting for ")));
            EXPECT_THAT(said.data(), HasSubstr("\"" + item + "\""));
        };
        EXPECT_FALSE(
            platform::FileCoordinator(folder).coordinateWriting(folder + "/" + item, whileHeld));
        EXPECT_TRUE(process.waitForFinished(kLimit));
        EXPECT_EQ(process.exitCode(), 0) << program;
    }
}

}  // namespace quillet::test
