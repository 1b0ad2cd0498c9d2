#include "mailhost/host/HostService.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <utility>

#include "mailhost/maildir/MaildirName.h"

#include "model/HostInterface.h"
#include "platform/base/Log.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "platform/desktop/SessionBus.h"

namespace quillet::mailhost {

namespace {

using platform::Log;

constexpr std::chrono::milliseconds kHurry{100};  // to another listing, of unsettled folders
constexpr int kHurriedRefreshes = 3;
// While folders go on changing, pauses last so many times the processor time of the reading before
// them, so that large folders take no more of the processor than small ones.
constexpr int kPauseShare = 15;
constexpr std::chrono::seconds kSlowestPace{5};
// A third of one processor at most, and pauses in which commands are carried out.
constexpr std::chrono::milliseconds kReadAheadBudget{5};
constexpr std::chrono::milliseconds kReadAheadPause{10};

std::chrono::microseconds processorTimeSince(std::clock_t start) {
    static_assert(CLOCKS_PER_SEC == 1'000'000);
    return std::chrono::microseconds(std::clock() - start);
}

std::string folderOfFile(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
}

// The mail folder of the message "FOLDER/cur/NAME"; empty for none.
std::string mailFolderOf(const std::string& path) {
    return path.empty() ? path : folderOfFile(folderOfFile(path));
}

}  // namespace

HostService::HostService(MailHost& host,
                         Journal& journal,
                         HostConfiguration& configuration,
                         CommandLog log)
    : host_(host),
      journal_(journal),
      configuration_(configuration),
      log_(log),
      afterChange_([this](const std::string& account) { return host_.afterChange(account); },
                   [this](const std::string& account) { journal_.setPending(account, false); },
                   [this](const std::string& account, const std::string& failure) {
                       notices_.tellAfterChangeFailed(account, failure);
                   }),
      notices_(platform::SessionBus::shared(),
               {[this](UndoList::Burst burst) { undo(burst); },
                [this](const std::string& url, const std::string& token) {
                    receive({"notice", {url}, {token, {}}, false, {}});
                }}),
      showing_(host, log, [this](const ClientOutcome& result) {
          notices_.tellDraft(mailFolderOf(result.storedAt), result.leftOut.size());
      }) {}

void HostService::start() {
    configureNotices();
    startTimers();
    const auto changed = [this] { configurationMayHaveChanged(); };
    configurationWatcher_ = std::make_unique<platform::FolderWatcher>(
        std::vector{folderOfFile(configuration_.file())}, 0, changed);
    refresh();
    const std::vector<std::string> pending = journal_.pendingAccounts();
    std::for_each(pending.begin(), pending.end(), [this](const std::string& account) {
        afterChange_.changed(account);
    });
}

void HostService::startTimers() {
    for (QTimer* const timer : {&refreshTimer_, &publishTimer_, &readAheadTimer_}) {
        timer->setSingleShot(true);
    }
    refreshTimer_.callOnTimeout([this] { refresh(); });
    publishTimer_.callOnTimeout([this] { publish(Notify::IfChanged); });
    readAheadTimer_.callOnTimeout([this] { readAhead(); });
    rescanTimer_.callOnTimeout([this] { rescan(); });
    rescanTimer_.setTimerType(Qt::VeryCoarseTimer);
    rescanTimer_.start(kRescan);
}

void HostService::configurationMayHaveChanged() {
    if (configuration_.isChanged()) {
        rescan();
    }
}

// Also looks for new accounts and folders. A configuration that is wrong changes nothing.
void HostService::rescan() {
    const auto read = configuration_.read();
    if (const auto* configuration = std::get_if<Configuration>(&read)) {
        toldProblems_.clear();
        host_.configure(*configuration);
        configureNotices();
    } else {
        tellOfProblems(std::get<1>(read));
    }
    host_.findFoldersAgain();
    refresh();
}

void HostService::tellOfProblems(const std::vector<std::string>& lines) {
    if (std::exchange(toldProblems_, lines) != lines) {
        for (const std::string& line : lines) {
            Log::write("MailHost the configuration stays as it was: %@", {line});
        }
    }
}

void HostService::watchFolders() {
    std::vector<std::string> folders = host_.watchedFolders();
    if (folders == watched_ && watcher_) {
        return;
    }
    watched_ = std::move(folders);
    watcher_ = std::make_unique<platform::FolderWatcher>(watched_, 0, [this] { refreshInPace(); });
}

void HostService::refreshInPace() {
    const auto next = lastRefresh_ ? *lastRefresh_ + pace_ : Clock::now();
    if (Clock::now() >= next) {
        refresh();
        return;
    }
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
    if (!refreshTimer_.isActive() || refreshTimer_.remainingTimeAsDuration() > wait) {
        refreshTimer_.start(wait);
    }
}

void HostService::refresh() {
    const std::clock_t start = std::clock();
    host_.refresh();
    watchFolders();
    isReadAhead_ = false;
    refreshAgainIfNeeded();
    // While folders change, listings come in a hurry, but what they show does not.
    if (!host_.isUnsettled() || !lastPublish_ || Clock::now() - *lastPublish_ >= pace_) {
        publish(Notify::IfChanged);
    }
    lastRefresh_ = Clock::now();
    pace_ =
        std::clamp<Clock::duration>(kPauseShare * processorTimeSince(start), kPace, kSlowestPace);
    if (!readAheadTimer_.isActive()) {
        readAheadTimer_.start(kReadAheadPause);
    }
}

void HostService::refreshAgainIfNeeded() {
    if (host_.isUnsettled()) {
        const bool isHurried = ++hurriedRefreshes_ <= kHurriedRefreshes;
        refreshTimer_.start(isHurried ? kHurry
                                      : std::chrono::ceil<std::chrono::milliseconds>(pace_));
        return;
    }
    hurriedRefreshes_ = 0;
    if (host_.isFolderMissing()) {
        refreshTimer_.start(kMissing);
    }
}

void HostService::readAhead() {
    if (host_.readAhead(kReadAheadBudget)) {
        readAheadTimer_.start(kReadAheadPause);
    } else {
        isReadAhead_ = true;
        publish(Notify::IfChanged);
    }
}

void HostService::publish(Notify notify) {
    mustNotify_ = mustNotify_ || notify == Notify::Always;
    const auto changes = host_.publish();
    readForNotices();
    if (!changes && changes.error().code == EWOULDBLOCK) {
        publishTimer_.start(publishPause_);
        publishPause_ = std::min(2 * publishPause_, kLongestPublishPause);
        return;
    }
    publishTimer_.stop();
    publishPause_ = kFirstPublishPause;
    lastPublish_ = Clock::now();
    const std::string problem = changes ? std::string() : changes.error().description();
    if (std::exchange(lastProblem_, problem) != problem && !problem.empty()) {
        Log::write("MailHost the container cannot be written: %@", {problem});
    }
    if (changes) {
        log_.writeChanges(changes.value());
    }
    if (std::exchange(mustNotify_, false) || (changes && !changes.value().files.empty())) {
        platform::DistributedNotificationCenter::defaultCenter().postNotification(
            kStoreNotificationName, kStoreNotificationObject);
    }
}

// The moves of one call go together, and the widget hears of them once. It has taken the rows away
// already: it must read again, above all when a message could not be moved.
void HostService::receive(const platform::ApplicationCall& call) {
    if (call.urls.empty()) {
        log_.writeCall(call);
        return;
    }
    bool isMove = false;
    for (const std::string& url : call.urls) {
        const HostCommand command = readHostCommand(url);
        const std::string subject = host_.subjectOf(command);
        const Outcome outcome = host_.carryOut(command);
        if (outcome.kind == Outcome::Kind::Found) {
            showing_.show(call, url, command, outcome.message);
            continue;
        }
        log_.writeCommand(call, url, command, outcome);
        notices_.tell(command, outcome, subject, UndoList::Clock::now());
        isMove = isMove || (command.problem.empty() && !command.shows());
        if (outcome.kind == Outcome::Kind::Moved) {
            afterChange_.changed(command.account);
        }
    }
    if (isMove) {
        publish(Notify::Always);
    }
}

void HostService::configureNotices() {
    notices_.configure(configuration_.current().notices, configuration_.current().notify);
}

void HostService::readForNotices() {
    notices_.read(host_.shown(),
                  isReadAhead_ && !host_.isUnsettled(),
                  static_cast<std::int64_t>(std::time(nullptr)));
}

void HostService::undo(UndoList::Burst burst) {
    const std::vector<UndoList::Undone> undone = host_.undo(burst);
    for (const UndoList::Undone& each : undone) {
        log_.writeUndone(each);
        if (each.file) {
            const std::string& path = each.file.value();
            notices_.expect(identifierOf(parseMaildirName(path.substr(path.rfind('/') + 1)).base),
                            static_cast<std::int64_t>(std::time(nullptr)));
            afterChange_.changed(each.account);
        }
    }
    notices_.tellUndone(undone);
    refresh();
    publish(Notify::Always);  // at once, also while folders change
}

}  // namespace quillet::mailhost
