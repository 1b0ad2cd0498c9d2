// quillet-mail-host-bench HOST FOLDER [MESSAGES [STORM [ROUNDS]]]: measures the mail host on a
// Maildir of MESSAGES messages, and on a storm of STORM new ones.
//
// HOST is quillet-mail-host, which runs in a process of its own. FOLDER is an empty folder that
// takes the Maildir, the container and the host's state; its path is absolute. The panel is the
// real one, offscreen. The session bus comes from the environment; nobody else should use it. Plain
// system calls for the same work are measured beside each figure. The run ends with 3 if a figure
// misses its goal.

#include <QApplication>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "app/PanelController.h"
#include "bench/FigureTable.h"
#include "bench/FolderClock.h"
#include "bench/MailHostProcess.h"
#include "bench/MaildirMaker.h"
#include "bench/PanelClock.h"
#include "bench/PlainMail.h"
#include "bench/Timing.h"
#include "platform/desktop/Queues.h"

namespace quillet::bench {

namespace {

constexpr std::size_t kHeadersRead = 600;  // about as many as the host has to read
constexpr double kStormRate = 130;         // messages in a second, as mbsync stores them
constexpr std::size_t kQuietSeconds = 5;   // at most: as many as there are rounds
constexpr int kSmallFolder = 30;           // messages
// Milliseconds until host and panel have followed all changes and the host does not pace itself any
// more.
constexpr int kPause = 1600;

struct Sizes {
    std::size_t messages = 50'000;
    std::size_t storm = 2'000;
    std::size_t rounds = 15;
};

void check(bool isRight, const char* what) {
    if (!isRight) {
        throw std::runtime_error(what);
    }
}

void checkRows(const MailHostPlace& place, const MaildirMaker& mail) {
    check(place.publishedRows() == mail.newest(),
          "the container does not show the newest messages");
}

// A host that runs, on the small store. The memory that it keeps once everything is read.
double smallStoreMemory(const std::string& program, const std::string& folder) {
    std::filesystem::create_directories(folder);
    const auto place =
        MailHostPlace::make(program, folder, "inbox = INBOX\ntodo = To Do\nmemo = Notes\n");
    makeMailFolder(folder + "/mail/Archive");
    makeMailFolder(folder + "/mail/Trash");
    MaildirMaker inbox(folder + "/mail/INBOX", kSmallFolder);
    inbox.fill();
    MaildirMaker(folder + "/mail/To Do", kSmallFolder).fill();
    MaildirMaker(folder + "/mail/Notes", kSmallFolder).fill();
    const MailHostProcess host(place);
    host.waitUntilQuiet();
    checkRows(place, inbox);
    return host.residentMemory();
}

// The figures of one Maildir, in the order in which they have to be measured.
class Measurement {
public:
    Measurement(const std::string& program, const std::string& folder, const Sizes& sizes)
        : sizes_(sizes),
          inbox_(folder + "/mail/INBOX"),
          archive_(folder + "/mail/Archive"),
          peerInbox_(folder + "/peer/INBOX"),
          peerArchive_(folder + "/peer/Archive"),
          place_(MailHostPlace::make(
              program, folder, "inbox = INBOX\narchive = Archive\ntrash = Trash\n")),
          mail_(inbox_, sizes.messages) {
        makeMailFolder(archive_);
        makeMailFolder(folder + "/mail/Trash");
        makeMailFolder(peerArchive_);
        mail_.fill();
        MaildirMaker(peerInbox_, sizes.rounds + 100).fill();
    }

    void once(FigureTable& table);
    void background(FigureTable& table);
    void answers(FigureTable& table);
    void storm(FigureTable& table);
    void endHost() { host_.reset(); }

private:
    std::function<bool()> isPublished(const ExpectedRow& row) const {
        return [this, row] {
            const std::vector<ExpectedRow> rows = place_.publishedRows();
            return !rows.empty() && rows.front() == row;
        };
    }
    std::size_t archived() const {
        const std::filesystem::directory_iterator files(archive_ + "/cur");
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    Sizes sizes_;
    std::string inbox_;
    std::string archive_;
    std::string peerInbox_;
    std::string peerArchive_;
    MailHostPlace place_;
    MaildirMaker mail_;
    std::unique_ptr<MailHostProcess> host_;
};

void Measurement::once(FigureTable& table) {
    std::vector<double> clock, peak, listing, facts, headers;
    runOnce(place_);  // fills the system's caches
    for (std::size_t round = 0; round < sizes_.rounds; ++round) {
        const OnceCost cost = runOnce(place_);
        clock.push_back(cost.clock);
        peak.push_back(cost.peak);
        listing.push_back(plainListing(inbox_));
        facts.push_back(plainStat(inbox_));
        headers.push_back(plainReading(inbox_, kHeadersRead));
        checkRows(place_, mail_);
    }
    table.add("--once, whole process, ms", clock, 1000);
    table.add("  plain: names of all files, ms", listing);
    table.add("  plain: names and facts of all files, ms", facts);
    table.add("  plain: first 4 KB of 600 files, ms", headers);
    table.add("--once, peak memory, MiB", peak, 40);
}

void Measurement::background(FigureTable& table) {
    host_ = std::make_unique<MailHostProcess>(place_);
    host_->waitUntilQuiet();
    table.add("reading the rest in the background, processor ms", {host_->use().processor});
    table.add("  plain: first 4 KB of all files, ms", {plainReading(inbox_, sizes_.messages)});
    table.add("resident memory afterwards, MiB", {host_->residentMemory()});
    QTest::qWait(kPause);
    const ProcessUse before = host_->use();
    QTest::qWait(static_cast<int>(std::min(sizes_.rounds, kQuietSeconds)) * 1000);
    const ProcessUse after = host_->use();
    table.add("while nothing happens: switches of the context",
              {static_cast<double>(after.switches - before.switches)},
              0);
    table.add("while nothing happens: processor ms", {after.processor - before.processor}, 0);
    checkRows(place_, mail_);
}

void Measurement::answers(FigureTable& table) {
    PanelController panel(platform::Look::Light);
    PaintClock painted(panel);
    painted.expect(mail_.newest().front().identifier);
    panel.show();
    waitFor([&] { return painted.time() != 0; });
    FolderClock published(std::filesystem::path(place_.inboxFile()).parent_path());
    FolderClock moved(archive_ + "/cur");
    std::vector<double> publishing, painting, moving, hiding, plainRename, plainWhole;
    for (std::size_t round = 1; round <= sizes_.rounds; ++round) {
        QTest::qWait(kPause);
        mail_.prepare();
        const ExpectedRow row = mail_.newest().front();
        painted.expect(row.identifier);
        published.expect(isPublished(row));
        const double start = now();
        mail_.deliver();
        waitFor([&] { return published.time() != 0 && painted.time() != 0; });
        publishing.push_back((published.time() - start) * 1e3);
        painting.push_back((painted.time() - start) * 1e3);

        QTest::qWait(kPause);
        mail_.dropNewest();
        moved.expect([] { return true; });
        published.expect(isPublished(mail_.newest().front()));
        const double click = clickFirstRow(panel, RowButton::Archive);
        waitFor([&] { return moved.time() != 0 && published.time() != 0; });
        moving.push_back((moved.time() - click) * 1e3);
        hiding.push_back((published.time() - click) * 1e3);
        check(archived() == round, "a message is not in the archive");

        const PlainMove plain = plainMove(peerInbox_, peerArchive_);
        plainRename.push_back(plain.untilRenamed);
        plainWhole.push_back(plain.whole);
    }
    checkRows(place_, mail_);
    panel.hide();
    platform::drainBackgroundQueue();
    table.add("new message until it is published, ms", publishing, 300);
    table.add("new message until its row is painted, ms", painting, 400);
    table.add("click until the file is in the archive, ms", moving, median(plainRename) + 10);
    table.add("  plain: journal line and rename, ms", plainRename);
    table.add("click until the store no longer shows it, ms", hiding, median(plainWhole) + 30);
    table.add("  plain: the same and both folders on the disk, ms", plainWhole);
}

void Measurement::storm(FigureTable& table) {
    QTest::qWait(kPause);
    FolderClock published(std::filesystem::path(place_.inboxFile()).parent_path());
    const ProcessUse before = host_->use();
    const double start = now();
    for (std::size_t message = 1; message <= sizes_.storm; ++message) {
        mail_.prepare();
        if (message == sizes_.storm) {
            published.expect(isPublished(mail_.newest().front()));
        }
        mail_.deliver();
        const double rest = start + static_cast<double>(message) / kStormRate - now();
        std::this_thread::sleep_for(std::chrono::duration<double>(std::max(rest, 0.0)));
    }
    const double stormed = now();
    waitFor([&] { return published.time() != 0; });
    host_->waitUntilQuiet();
    const double processor = host_->use().processor - before.processor;
    checkRows(place_, mail_);
    const double milliseconds = (stormed - start) * 1e3;
    const double plain =
        plainListing(inbox_) * (milliseconds / 1e3) + plainReading(inbox_, sizes_.storm);
    table.add(
        "storm, processor of the host, percent of a core", {processor / milliseconds * 100}, 10);
    table.add("  plain: all names each second, new headers, percent", {plain / milliseconds * 100});
    table.add("end of the storm until all is published, ms", {(published.time() - stormed) * 1e3});
}

int run(const std::string& program,
        const std::string& folder,
        const Sizes& sizes,
        int argc,
        char** argv) {
    // Before anything of the panel is loaded into this process: see runOnce().
    ::setenv("XDG_STATE_HOME", (folder + "/state").c_str(), 1);
    ::setenv("QUILLET_CONTAINER", (folder + "/container").c_str(), 1);
    Measurement measurement(program, folder, sizes);
    std::printf("The mail host, %zu messages in the Inbox, a storm of %zu, %zu rounds\n",
                sizes.messages,
                sizes.storm,
                sizes.rounds);
    FigureTable table;
    measurement.once(table);
    const QApplication application(argc, argv);
    table.add("resident memory, 3 folders of 30 messages, MiB",
              {smallStoreMemory(program, folder + "/small")},
              20);
    measurement.background(table);
    measurement.answers(table);
    measurement.storm(table);
    measurement.endHost();
    return table.isFast() ? EXIT_SUCCESS : kTooSlow;
}

}  // namespace

}  // namespace quillet::bench

int main(int argc, char** argv) {
    if (argc < 3 || argc > 6) {
        std::fputs("Usage: quillet-mail-host-bench HOST FOLDER [MESSAGES [STORM [ROUNDS]]]\n",
                   stderr);
        return 2;
    }
    try {
        quillet::bench::Sizes sizes;
        std::size_t* const numbers[] = {&sizes.messages, &sizes.storm, &sizes.rounds};
        for (int index = 3; index < argc; ++index) {
            *numbers[index - 3] = std::stoul(argv[index]);
        }
        return quillet::bench::run(argv[1], argv[2], sizes, argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "quillet-mail-host-bench: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
