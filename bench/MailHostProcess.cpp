#include "bench/MailHostProcess.h"

#include <QTest>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>

#include "bench/Timing.h"
#include "platform/files/FileManager.h"
#include "platform/plist/PropertyList.h"

extern char** environ;

namespace quillet::bench {

namespace {

constexpr double kKibibytes = 1024;  // in a MiB
constexpr int kSecond = 1000;        // milliseconds
constexpr int kMostSeconds = 300;    // until a host is quiet

// The number behind `key` in a file of lines "KEY: NUMBER …"; 0 if there is none.
long numberIn(const std::string& path, const std::string& key) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(key)) {
            return std::stol(line.substr(key.size()));
        }
    }
    return 0;
}

}  // namespace

MailHostPlace MailHostPlace::make(const std::string& program,
                                  const std::string& folder,
                                  const std::string& folders) {
    MailHostPlace place{program, folder, folder + "/container", folder + "/mail-host.conf"};
    std::ofstream file(place.configuration);
    file << "[account anna@example.com]\nmaildir = \"" << folder << "/mail\"\n" << folders;
    if (!file.flush()) {
        throw std::system_error(errno, std::generic_category(), place.configuration);
    }
    return place;
}

std::vector<std::string> MailHostPlace::arguments() const {
    return {"--config", configuration, "--container", container};
}

std::string MailHostPlace::inboxFile() const {
    return container + "/SharedData/Today/anna@example.com/1-INBOX.plist";
}

std::vector<ExpectedRow> MailHostPlace::publishedRows() const {
    platform::PropertyListDocument document;
    constexpr std::size_t kMostBytes = 1 << 20;
    if (platform::FileManager::readFile(inboxFile(), document.bytes(), kMostBytes)) {
        return {};
    }
    if (const auto error = document.parse()) {
        throw std::runtime_error(error->description());
    }
    std::vector<ExpectedRow> rows;
    for (const auto& message : document.root().valueForKey("data")) {
        rows.push_back({message.valueForKey("messageId").stringValue(),
                        message.valueForKey("subject").stringValue(),
                        message.valueForKey("date").integerValue()});
    }
    return rows;
}

OnceCost runOnce(const MailHostPlace& place) {
    std::filesystem::remove_all(place.container);
    std::vector<std::string> words = place.arguments();
    words.insert(words.begin(), place.program);
    words.emplace_back("--once");
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const double start = milliseconds(CLOCK_MONOTONIC);
    pid_t process = 0;
    int status = 0;
    rusage used{};
    if (const int code = ::posix_spawn(
            &process, place.program.c_str(), nullptr, nullptr, arguments.data(), environ);
        code != 0) {
        throw std::system_error(code, std::generic_category(), place.program);
    }
    if (::wait4(process, &status, 0, &used) != process || status != 0) {
        throw std::runtime_error("quillet-mail-host --once failed");
    }
    return {milliseconds(CLOCK_MONOTONIC) - start,
            static_cast<double>(used.ru_maxrss) / kKibibytes};
}

MailHostProcess::MailHostProcess(const MailHostPlace& place) {
    process_.setProcessChannelMode(QProcess::ForwardedChannels);
    QStringList arguments;
    for (const std::string& word : place.arguments()) {
        arguments.append(QString::fromStdString(word));
    }
    process_.start(QString::fromStdString(place.program), arguments);
    if (!process_.waitForStarted()) {
        throw std::runtime_error(place.program + " does not start");
    }
}

MailHostProcess::~MailHostProcess() {
    process_.terminate();
    process_.waitForFinished();
}

std::string MailHostProcess::proc() const {
    return "/proc/" + std::to_string(process_.processId());
}

ProcessUse MailHostProcess::use() const {
    ProcessUse use;
    for (const auto& thread : std::filesystem::directory_iterator(proc() + "/task")) {
        double nanoseconds = 0;
        std::ifstream(thread.path() / "schedstat") >> nanoseconds;
        use.processor += nanoseconds / 1e6;
        const std::string status = thread.path() / "status";
        use.switches += numberIn(status, "voluntary_ctxt_switches:") +
                        numberIn(status, "nonvoluntary_ctxt_switches:");
    }
    return use;
}

double MailHostProcess::residentMemory() const {
    return static_cast<double>(numberIn(proc() + "/status", "VmRSS:")) / kKibibytes;
}

void MailHostProcess::waitUntilQuiet() const {
    long before = -1;
    for (int second = 0; second < kMostSeconds; ++second) {
        const long switches = use().switches;
        if (switches == before) {
            return;
        }
        before = switches;
        QTest::qWait(kSecond);
    }
    throw std::runtime_error("the host does not come to rest");
}

}  // namespace quillet::bench
