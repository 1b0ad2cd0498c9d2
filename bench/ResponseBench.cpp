// quillet-response-bench MAIL-HOST FOLDER RUNS: measures how long user and host wait for each
// other; the folder gets what the mail host needs. quillet-response-bench host DATA-FOLDER: the
// host's side. For each line on standard input, writes a store, tells the widget of it, and prints
// the time just before that.
//
// The panel is the real one, offscreen. Both hosts are processes of their own. The session bus and
// the container come from the environment; nobody else should use them.

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/PanelController.h"
#include "bench/MailHostProcess.h"
#include "bench/PanelClock.h"
#include "bench/store/StoreWriter.h"
#include "model/HostInterface.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/Queues.h"

namespace {

using namespace quillet;
using bench::now;
using bench::PaintClock;
using bench::waitFor;

constexpr int kMessages = 1000;
// Milliseconds until the panel, which watches the files, has also followed their change.
constexpr int kQuiet = 300;

std::string newestOf(int round) {
    return std::to_string(round) + ".0@example.org";
}

// Writes kMessages messages, different ones in each round.
void writeMessages(const std::string& dataFolder, int round) {
    const std::string mail = "anna@example.org";
    test::Array messages;
    for (int index = 0; index < kMessages; ++index) {
        messages.push_back(test::Dictionary{
            {"messageId", std::to_string(round) + "." + std::to_string(index) + "@example.org"},
            {"account", mail},
            {"from", "Björn Eriksen"},
            {"subject", "Notes on the meeting of Friday, the " + std::to_string(index)},
            {"date", now() - index * 3600.0},
            {"folderStid", 1}});
    }
    const test::StoreFile files[] = {
        {"Today/" + mail + "/INBOX.plist",
         test::Dictionary{{"folder", "INBOX"}, {"account", mail}, {"data", std::move(messages)}},
         test::PropertyListFormat::Binary},
        {"Accounts.plist",
         test::Array{test::Dictionary{{"mail", mail}, {"enabled", true}}},
         test::PropertyListFormat::Xml}};
    if (const auto failure = test::writeStore(dataFolder, files)) {
        throw std::runtime_error(failure->description());
    }
}

int runHost(const std::string& dataFolder) {
    int round = 0;
    for (std::string line; std::getline(std::cin, line);) {
        writeMessages(dataFolder, ++round);
        const double time = now();
        if (!platform::DistributedNotificationCenter::defaultCenter().postNotification(
                kStoreNotificationName, kStoreNotificationObject)) {
            throw std::runtime_error("there is no session bus");
        }
        std::printf("%.6f\n", time);
        std::fflush(stdout);
    }
    return 0;
}

// A process whose standard output is read line by line.
class Peer : public QProcess {
public:
    Peer(const QString& program, const QStringList& arguments) {
        setProcessChannelMode(ForwardedErrorChannel);
        start(program, arguments);
    }
    ~Peer() override {
        closeWriteChannel();
        terminate();
        waitForFinished();
    }

    std::string nextLine() {
        waitFor([this] { return canReadLine() || state() == NotRunning; });
        return readLine().toStdString();
    }
};

void print(const char* what, std::vector<double> seconds) {
    std::sort(seconds.begin(), seconds.end());
    std::printf("%s: median %.2f ms, minimum %.2f ms, maximum %.2f ms (%zu runs)\n",
                what,
                seconds[seconds.size() / 2] * 1e3,
                seconds.front() * 1e3,
                seconds.back() * 1e3,
                seconds.size());
}

// A mail host without mail, which still answers every command.
QStringList wordsOfMailHost(const QString& program, const std::string& folder) {
    for (const char* mailFolder : {"INBOX", "Archive", "Trash"}) {
        std::filesystem::create_directories(folder + "/mail/" + mailFolder + "/cur");
    }
    const auto place = bench::MailHostPlace::make(program.toStdString(), folder, "");
    QStringList words{QStringLiteral("--log"), QStringLiteral("quillet://ready")};
    for (const std::string& word : place.arguments()) {
        words.append(QString::fromStdString(word));
    }
    return words;
}

// The time of the next command in the log, which also tells of files that the host writes.
double nextCommand(Peer& mailHost) {
    for (;;) {
        const auto line = nlohmann::json::parse(mailHost.nextLine());
        if (line.contains("command")) {
            return line.at("time").get<double>();
        }
    }
}

double clickReply(PanelController& panel, Peer& mailHost) {
    const double start = bench::clickFirstRow(panel, bench::RowButton::Reply);
    return nextCommand(mailHost) - start;
}

int runPanelSide(const std::string& dataFolder,
                 const QString& program,
                 const QString& mailHostProgram,
                 const std::string& folder,
                 std::size_t runs) {
    writeMessages(dataFolder, 0);
    Peer host(program, {QStringLiteral("host"), QString::fromStdString(dataFolder)});
    Peer mailHost(mailHostProgram, wordsOfMailHost(mailHostProgram, folder));
    nextCommand(mailHost);  // it has its name and has carried out the command it was started with
    PanelController panel(platform::Look::Light);
    PaintClock clock(panel);
    clock.expect(newestOf(0));
    panel.show();
    waitFor([&] { return clock.time() != 0; });

    std::vector<double> clicks;
    std::vector<double> repaints;
    for (std::size_t run = 1; run <= runs; ++run) {
        clicks.push_back(clickReply(panel, mailHost));
        clock.expect(newestOf(static_cast<int>(run)));
        host.write("\n");
        const double told = std::stod(host.nextLine());
        waitFor([&] { return clock.time() != 0; });
        repaints.push_back(clock.time() - told);
        QTest::qWait(kQuiet);
    }
    print("From a click to the log of a running mail host", clicks);
    print("From a host's notification to the repainted list, 1,000 messages", repaints);
    panel.hide();
    platform::drainBackgroundQueue();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const char* const container = std::getenv("QUILLET_CONTAINER");
    try {
        if (words.size() == 2 && words[0] == "host") {
            const QCoreApplication application(argc, argv);
            return runHost(words[1]);
        }
        if (words.size() == 3 && container != nullptr) {
            const QApplication application(argc, argv);
            return runPanelSide(test::dataFolder(container),
                                QCoreApplication::applicationFilePath(),
                                QString::fromStdString(words[0]),
                                words[1],
                                std::stoul(words[2]));
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillet-response-bench: %s\n", error.what());
        return 1;
    }
    std::fputs("Usage: QUILLET_CONTAINER=DIR quillet-response-bench MAIL-HOST FOLDER RUNS\n",
               stderr);
    return 2;
}
