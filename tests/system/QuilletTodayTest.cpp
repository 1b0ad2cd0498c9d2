// The real program, in processes of its own, over a container that the sample host has written.

#include <QImage>
#include <QProcess>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tuple>
#include <unistd.h>

#include "model/ContainerPaths.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileDescriptor.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {

using Json = nlohmann::json;
using ::testing::HasSubstr;

namespace {

constexpr int kLimit = 30'000;  // milliseconds

struct Outcome {
    int status = -1;
    std::string output;
    std::string errors;
};

}  // namespace

class QuilletTodayTest : public ::testing::Test {
protected:
    QuilletTodayTest() {
        environment_.insert(QStringLiteral("QUILLET_CONTAINER"), text(container.path()));
        environment_.insert(QStringLiteral("XDG_RUNTIME_DIR"), text(runtime.path()));
        environment_.insert(QStringLiteral("XDG_CONFIG_HOME"), text(config.path()));
        environment_.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_GB.UTF-8"));
    }

    static QString text(const std::string& path) { return QString::fromStdString(path); }

    std::unique_ptr<QProcess> start(const char* program, const QStringList& arguments) {
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(environment_);
        process->start(QStringLiteral(QUILLET_BIN "/") + QLatin1String(program), arguments);
        return process;
    }

    Outcome run(const char* program, const QStringList& arguments) {
        const auto process = start(program, arguments);
        if (!process->waitForFinished(kLimit) || process->exitStatus() != QProcess::NormalExit) {
            return {};
        }
        return {process->exitCode(),
                process->readAllStandardOutput().toStdString(),
                process->readAllStandardError().toStdString()};
    }

    void writeDemo() {
        ASSERT_EQ(
            run("quillet-sample-host", {QStringLiteral("write"), text(container.path())}).status,
            0);
    }

    TemporaryFolder container;
    TemporaryFolder runtime;
    TemporaryFolder config;
    QProcessEnvironment environment_ = QProcessEnvironment::systemEnvironment();
};

TEST_F(QuilletTodayTest, ListNeedsNeitherDisplayNorBus) {
    writeDemo();
    for (const char* variable :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS"}) {
        environment_.remove(QLatin1String(variable));
    }
    const Outcome outcome =
        run("quillet-today",
            {QStringLiteral("list"), QStringLiteral("--json"), QStringLiteral("--segment=1")});
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
    const Outcome list = run("quillet-today", {QStringLiteral("list"), QStringLiteral("--json")});
    const auto rows = static_cast<int>(Json::parse(list.output)["messages"].size());
    const TemporaryFolder temporary;
    environment_.insert(QStringLiteral("TMPDIR"), text(temporary.path()));
    environment_.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    for (const char* scale : {"1", "1.25", "1.5", "2", "3"}) {
        const QString file = text(config.path("picture.png"));
        const Outcome outcome = run("quillet-today",
                                    {QStringLiteral("snapshot"),
                                     file,
                                     QStringLiteral("--dark"),
                                     QStringLiteral("--scale"),
                                     QLatin1String(scale)});
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        const QImage picture(file);
        const double ratio = std::stod(scale);
        EXPECT_EQ(picture.width(), 320 * ratio) << scale;
        EXPECT_NEAR(picture.height(), (35 + 60 * rows) * ratio, 1) << scale;
        EXPECT_LT(picture.pixelColor(1, picture.height() - 2).lightness(), 100);
    }
}

TEST_F(QuilletTodayTest, FailuresHaveTheirStatusAndCannotDisturbTheTerminal) {
    const QString odd = text(config.path("no\x1b[31m/such/folder.png"));
    const QString file = text(container.writeFile("file", ""));
    const std::pair<QStringList, const char*> rows[] = {
        {{QStringLiteral("snapshot"), odd}, "no [31m/such/folder.png"},
        {{QStringLiteral("snapshot"), text(container.path())}, "Is a directory"},
        {{QStringLiteral("list"), QStringLiteral("--container"), file}, "Not a directory"},
    };
    for (const auto& [words, reason] : rows) {
        const Outcome failure = run("quillet-today", words);
        EXPECT_EQ(failure.status, 1);
        EXPECT_EQ(failure.output, "");
        EXPECT_THAT(failure.errors, HasSubstr(reason));
    }
    const Outcome early =
        run("quillet-today", {QStringLiteral("list"), QStringLiteral("--container"), odd});
    EXPECT_EQ(early.status, 0);
    EXPECT_EQ(early.output, "No messages\n");
    EXPECT_THAT(early.errors, HasSubstr("no [31m/such/folder.png\" yet"));
}

TEST_F(QuilletTodayTest, AllProgramsHelpAndComplainInOneForm) {
    for (const char* program : {"quillet-today", "quillet-share", "quillet-sample-host"}) {
        SCOPED_TRACE(program);
        const std::string name = program;
        const Outcome help = run(program, {QStringLiteral("--help")});
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
        EXPECT_EQ(run(program, {QStringLiteral("-h")}).output, help.output);
        EXPECT_EQ(run(program, {QStringLiteral("-v")}).output.rfind(name + " 0.", 0), 0U);
        for (const char* typed : {"--segmnt", "-x", "--hel"}) {
            const Outcome wrong = run(program, {QLatin1String(typed)});
            EXPECT_EQ(wrong.status, 2);
            EXPECT_EQ(
                wrong.errors,
                name + ": there is no option \"" + typed + "\"\nTry \"" + name + " --help\".\n");
        }
    }
}

TEST_F(QuilletTodayTest, OfSeveralStartsOnePanelStays) {
    writeDemo();
    environment_.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (const bool hasBus : {true, false}) {
        if (!hasBus) {
            environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                                QStringLiteral("disabled:"));
        }
        const std::array panels{
            start("quillet-today", {}), start("quillet-today", {}), start("quillet-today", {})};
        const auto isRunning = [](const auto& panel) {
            return panel->state() == QProcess::Running;
        };
        for (const auto& panel : panels) {
            ASSERT_TRUE(panel->waitForStarted());
        }
        ASSERT_TRUE(
            waitUntil([&] { return std::ranges::count_if(panels, isRunning) == 1; }, kLimit));
        for (const auto& panel : panels) {
            if (isRunning(panel)) {
                panel->terminate();
                panel->waitForFinished(kLimit);
            } else {
                EXPECT_EQ(panel->exitCode(), hasBus ? 0 : 1);
                EXPECT_EQ(panel->readAllStandardError().contains("running already"), !hasBus);
            }
        }
    }
}

TEST_F(QuilletTodayTest, OnATerminalAProgramSaysWhatItWaitsFor) {
    writeDemo();
    const platform::FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY));
    ASSERT_TRUE(::grantpt(terminal.get()) == 0 && ::unlockpt(terminal.get()) == 0);
    const std::tuple<const char*, QStringList, std::string> cases[] = {
        {"quillet-today", {QStringLiteral("list")}, "Today"},
        {"quillet-today",
         {QStringLiteral("snapshot"), text(config.path("a.png"))},
         "Accounts.plist"},
        {"quillet-share",
         {QStringLiteral("--print"),
          QStringLiteral("--service=In"),
          text(config.writeFile("a", ""))},
         "In"},
    };
    const EnvironmentVariable sameRuntime("XDG_RUNTIME_DIR", runtime.path());
    const std::string folder = container.path("SharedData");
    for (const auto& [program, arguments, item] : cases) {
        QProcess process;
        process.setStandardErrorFile(QString::fromLocal8Bit(::ptsname(terminal.get())));
        process.setProcessEnvironment(environment_);
        const auto whileHeld = [&](const std::string& /*path*/) {
            process.start(QStringLiteral(QUILLET_BIN "/") + QLatin1String(program), arguments);
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
