// quillet-response-bench SAMPLE-HOST RUNS: measures how long user and host wait for each other.
// quillet-response-bench host DATA-FOLDER: the host's side. For each line on standard input, writes
// a store, tells the widget of it, and prints the time just before that.
//
// The panel is the real one, offscreen. Both hosts are processes of their own. The session bus and
// the container come from the environment; nobody else should use them.

#include <QApplication>
#include <QProcess>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/PanelController.h"
#include "bench/PanelClock.h"
#include "host/StoreWriter.h"
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
    host::Array messages;
    for (int index = 0; index < kMessages; ++index) {
        messages.push_back(host::Dictionary{
            {"messageId", std::to_string(round) + "." + std::to_string(index) + "@example.org"},
            {"account", mail},
            {"from", "Björn Eriksen"},
            {"subject", "Notes on the meeting of Friday, the " + std::to_string(index)},
            {"date", now() - index * 3600.0},
            {"folderStid", 1}});
    }
    const host::StoreFile files[] = {
        {"Today/" + mail + "/INBOX.plist",
         host::Dictionary{{"folder", "INBOX"}, {"account", mail}, {"data", std::move(messages)}},
         host::PropertyListFormat::Binary},
        {"Accounts.plist",
         host::Array{host::Dictionary{{"mail", mail}, {"enabled", true}}},
         host::PropertyListFormat::Xml}};
    if (const auto failure = host::writeStore(dataFolder, files)) {
        throw std::runtime_error(failure->error.description());
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

double clickReply(PanelController& panel, Peer& sampleHost) {
    const double start = bench::clickFirstRow(panel, bench::RowButton::Reply);
    return nlohmann::json::parse(sampleHost.nextLine()).at("time").get<double>() - start;
}

int runPanelSide(const std::string& dataFolder,
                 const QString& program,
                 const QString& sampleHostProgram,
                 std::size_t runs) {
    writeMessages(dataFolder, 0);
    Peer host(program, {QStringLiteral("host"), QString::fromStdString(dataFolder)});
    Peer sampleHost(sampleHostProgram, {QStringLiteral("run"), QStringLiteral("quillet://ready")});
    sampleHost.nextLine();  // it has its name and has carried out the command it was started with
    PanelController panel(platform::Look::Light);
    PaintClock clock(panel);
    clock.expect(newestOf(0));
    panel.show();
    waitFor([&] { return clock.time() != 0; });

    std::vector<double> clicks;
    std::vector<double> repaints;
    for (std::size_t run = 1; run <= runs; ++run) {
        clicks.push_back(clickReply(panel, sampleHost));
        clock.expect(newestOf(static_cast<int>(run)));
        host.write("\n");
        const double told = std::stod(host.nextLine());
        waitFor([&] { return clock.time() != 0; });
        repaints.push_back(clock.time() - told);
        QTest::qWait(kQuiet);
    }
    print("From a click to Open in a running host", clicks);
    print("From a host's notification to the repainted list, 1,000 messages", repaints);
    panel.hide();
    platform::drainBackgroundQueue();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const char* const container = std::getenv("QUILLET_CONTAINER");
    if (argc != 3 || container == nullptr) {
        std::fputs("Usage: QUILLET_CONTAINER=DIR quillet-response-bench SAMPLE-HOST RUNS\n",
                   stderr);
        return 2;
    }
    try {
        if (std::string(argv[1]) == "host") {
            const QCoreApplication application(argc, argv);
            return runHost(argv[2]);
        }
        const QApplication application(argc, argv);
        return runPanelSide(host::dataFolder(container),
                            QCoreApplication::applicationFilePath(),
                            QString::fromLocal8Bit(argv[1]),
                            std::stoul(argv[2]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillet-response-bench: %s\n", error.what());
        return 1;
    }
}
