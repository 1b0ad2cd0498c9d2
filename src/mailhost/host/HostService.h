#pragma once

#include <QTimer>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "mailhost/host/AfterChange.h"
#include "mailhost/host/CommandLog.h"
#include "mailhost/host/HostConfiguration.h"
#include "mailhost/host/MailHost.h"
#include "mailhost/host/Notices.h"
#include "mailhost/host/Showing.h"

#include "platform/desktop/ApplicationService.h"
#include "platform/desktop/FolderWatcher.h"

namespace quillet::mailhost {

// The mail host in an event loop: reads again when folders change, carries out commands, and tells
// the widget. Main thread only.
class HostService {
public:
    // How often folders are read again at most while they go on changing (less often if reading
    // takes long), and how often if nothing says that they changed: network file systems do not.
    static constexpr std::chrono::seconds kPace{1};
    static constexpr std::chrono::minutes kRescan{10};
    // How often a folder that is missing is looked for.
    static constexpr std::chrono::seconds kMissing{5};

    // Everything has to outlive the service.
    HostService(MailHost& host, Journal& journal, HostConfiguration& configuration, CommandLog log);

    // Reads everything and publishes it, then goes on from the event loop.
    void start();
    void receive(const platform::ApplicationCall& call);

private:
    static constexpr std::chrono::milliseconds kFirstPublishPause{20};
    static constexpr std::chrono::milliseconds kLongestPublishPause{1000};

    using Clock = std::chrono::steady_clock;
    enum class Notify { IfChanged, Always };

    void startTimers();
    void configurationMayHaveChanged();
    void rescan();
    void tellOfProblems(const std::vector<std::string>& lines);
    // Watches the shown folders, unless they are the same as before.
    void watchFolders();
    void refreshInPace();
    void refresh();
    void refreshAgainIfNeeded();
    void readAhead();
    void publish(Notify notify);
    void configureNotices();
    void readForNotices();
    // Brings the messages of a burst back and shows them.
    void undo(UndoList::Burst burst);

    MailHost& host_;
    Journal& journal_;
    HostConfiguration& configuration_;
    CommandLog log_;
    AfterChange afterChange_;
    Notices notices_;
    Showing showing_;
    std::vector<std::string> watched_;
    std::unique_ptr<platform::FolderWatcher> watcher_;
    std::unique_ptr<platform::FolderWatcher> configurationWatcher_;
    QTimer refreshTimer_;  // the next refresh()
    QTimer publishTimer_;  // another try of publish()
    QTimer rescanTimer_;
    QTimer readAheadTimer_;
    std::optional<Clock::time_point> lastRefresh_;
    Clock::duration pace_ = kPace;
    bool isReadAhead_ = false;  // since the last refresh()
    int hurriedRefreshes_ = 0;  // since the folders were last settled
    std::optional<Clock::time_point> lastPublish_;
    std::chrono::milliseconds publishPause_ = kFirstPublishPause;  // to the next try
    std::vector<std::string> toldProblems_;                        // of the configuration
    bool mustNotify_ = false;                                      // once publish() is through
    std::string lastProblem_;                                      // of publish(), told once
};

}  // namespace quillet::mailhost
