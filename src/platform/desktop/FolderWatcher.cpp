#include "platform/desktop/FolderWatcher.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>
#include <utility>

#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"

namespace quillet::platform {

namespace {

namespace fs = std::filesystem;

constexpr int kAttempts = 3;
constexpr std::size_t kEventBytes = 16'384;  // read at a time
constexpr std::uint32_t kSelfGone = IN_DELETE_SELF | IN_MOVE_SELF;
constexpr std::uint32_t kEntries = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
constexpr std::uint32_t kInside = kSelfGone | kEntries | IN_CLOSE_WRITE | IN_ATTRIB;

fs::path absolutePath(const std::string& folder) {
    std::error_code ignored;
    fs::path path = fs::absolute(folder, ignored).lexically_normal();
    return path.has_filename() ? path : path.parent_path();
}

}  // namespace

struct FolderWatcher::State final : public QObject {
public:
    State(const std::vector<std::string>& folders, int levels, std::function<void()> changed)
        : levels_(levels),
          changed_(std::move(changed)),
          inotify_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        std::transform(folders.begin(), folders.end(), std::back_inserter(folders_), absolutePath);
        if (!inotify_) {
            Log::write("FolderWatcher %@", {posixError(errno, "inotify").description()});
            return;
        }
        settle_.setSingleShot(true);
        connect(&settle_, &QTimer::timeout, this, [this] { tell(); });
        auto* const notifier = new QSocketNotifier(inotify_.get(), QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this] { readEvents(); });
        watchAll();
    }

private:
    struct Watch {
        bool isInside = false;            // in a tree, not on the way to it
        std::set<std::string> awaited{};  // on the way: the missing entries that lead to trees
        unsigned round = 0;               // of the last watchAll that found the folder
    };

    // Sets all watches again, on the way to the folders and in their trees, as far as they exist,
    // and drops those of folders that are gone. A failure means missed changes, so the first one is
    // logged.
    void watchAll() {
        ++round_;
        masks_.clear();
        failure_.reset();
        isAnyFolderThere_ = false;
        for (const fs::path& folder : folders_) {
            watchTree(folder);
            isAnyFolderThere_ = isAnyFolderThere_ || FileManager::folderExists(folder.string());
        }
        if (failure_) {
            Log::write("FolderWatcher %@", {failure_->description()});
        }
        std::erase_if(watches_, [this](const auto& entry) {
            const bool isStale = entry.second.round != round_;
            if (isStale) {
                ::inotify_rm_watch(inotify_.get(), entry.first);
            }
            return isStale;
        });
    }

    // Changes between two looks at the disk are caught by another attempt.
    void watchTree(const fs::path& folder) {
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            const std::optional<fs::path> awaited = watchWay(folder);
            if (addInside(folder, 0) || (awaited && !FileManager::fileExists(awaited->string()))) {
                break;
            }
        }
    }

    // Watches whether the folders above disappear. If the folder is missing, the lowest existing
    // one is also watched for the entry that leads to it, which is returned.
    std::optional<fs::path> watchWay(const fs::path& folder) {
        std::optional<fs::path> awaited;
        bool isMissing = !FileManager::folderExists(folder.string());
        for (fs::path next = folder; next.has_relative_path(); next = next.parent_path()) {
            Watch* const watch =
                add(next.parent_path(), isMissing ? kSelfGone | kEntries : kSelfGone);
            if (watch != nullptr && isMissing) {
                watch->awaited.insert(next.filename().string());
                awaited = next;
                isMissing = false;
            }
        }
        return awaited;
    }

    // Watches a folder before it lists its entries, so that none is missed. Returns false if the
    // folder cannot be watched.
    bool addInside(const fs::path& folder, int level) {
        Watch* const watch = add(folder, kInside);
        if (watch == nullptr) {
            return false;
        }
        watch->isInside = true;
        if (level == levels_) {
            return true;
        }
        std::error_code failure;
        for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
             entry.increment(failure)) {
            std::error_code ignored;
            if (entry->is_directory(ignored)) {
                addInside(entry->path(), level + 1);
            }
        }
        return true;
    }

    // Returns null if the folder does not exist or cannot be watched. A folder may be in one tree
    // and on the way to another: all its masks of a round count.
    Watch* add(const fs::path& folder, std::uint32_t mask) {
        std::uint32_t& all = masks_[folder.string()];
        all |= mask;
        const int id =
            ::inotify_add_watch(inotify_.get(), folder.c_str(), all | IN_ONLYDIR | IN_EXCL_UNLINK);
        if (id < 0) {
            if (errno != ENOENT && errno != ENOTDIR && !failure_) {
                failure_ = posixError(errno, folder.string());
            }
            return nullptr;
        }
        Watch& watch = watches_[id];
        if (watch.round != round_) {
            watch = Watch{.round = round_};
        }
        return &watch;
    }

    void readEvents() {
        alignas(inotify_event) std::array<char, kEventBytes> buffer{};
        const ssize_t length = ::read(inotify_.get(), buffer.data(), buffer.size());
        for (std::size_t at = 0; length > 0 && at < static_cast<std::size_t>(length);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char* const name = buffer.data() + at + sizeof event;
            take(event, event.len > 0 ? name : "");
            at += sizeof event + event.len;
        }
    }

    void take(const inotify_event& event, std::string_view name) {
        const bool isOverflow = (event.mask & IN_Q_OVERFLOW) != 0;
        const auto watch = watches_.find(event.wd);
        if (!isOverflow && watch == watches_.end()) {
            return;
        }
        if (isOverflow || (event.mask & (kSelfGone | IN_IGNORED | IN_UNMOUNT)) != 0 ||
            watch->second.isInside || watch->second.awaited.contains(std::string(name))) {
            if (!settle_.isActive()) {
                settle_.start(kSettleTime);
            }
        }
        if ((event.mask & IN_IGNORED) != 0) {
            watches_.erase(watch);
        }
    }

    void tell() {
        const bool wasThere = isAnyFolderThere_;
        watchAll();
        if (wasThere || isAnyFolderThere_) {
            const auto changed = changed_;  // the call may end this object
            changed();
        }
    }

    std::vector<fs::path> folders_;
    int levels_;
    std::function<void()> changed_;
    FileDescriptor inotify_;
    QTimer settle_;
    std::map<int, Watch> watches_;
    std::map<std::string, std::uint32_t> masks_;  // of this round, by folder
    unsigned round_ = 0;
    std::optional<Error> failure_;  // the first of this round
    bool isAnyFolderThere_ = false;
};

FolderWatcher::FolderWatcher(const std::vector<std::string>& folders,
                             int levels,
                             std::function<void()> changed)
    : state_(std::make_unique<State>(folders, levels, std::move(changed))) {}

FolderWatcher::~FolderWatcher() = default;

}  // namespace quillet::platform
