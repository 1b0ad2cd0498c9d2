#include "mailhost/accounts/FolderLayout.h"

#include <algorithm>
#include <array>
#include <deque>
#include <filesystem>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <utility>

#include "mailhost/accounts/AccountFolders.h"
#include "mailhost/accounts/ModifiedUtf7.h"

#include "platform/base/Utf8.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

using platform::FileManager::folderExists;
using platform::Path::appendingPathComponent;

constexpr std::size_t kMostFolders = 10'000;
constexpr unsigned kMostLevels = 16;
constexpr std::string_view kKMailSuffix = ".directory";
constexpr std::string_view kRootName = "INBOX";

bool isPartOfMaildir(std::string_view name) {
    return name == "cur" || name == "new" || name == "tmp";
}

bool isKMailContainer(std::string_view name) {
    return name.size() > kKMailSuffix.size() + 1 && name.starts_with('.') &&
           name.ends_with(kKMailSuffix);
}

// A folder of the file system that is or may hold mail folders.
struct Place {
    std::string path;
    std::string name;  // decoded; empty: the root
    unsigned level = 0;
    bool isFolder = true;  // whether it can be a mail folder itself
    bool isParent = true;  // whether folders may lie in it
};

Place placeBelow(const Place& parent, const std::string& entry, std::string_view shownName) {
    Place place;
    place.path = appendingPathComponent(parent.path, entry);
    place.name = parent.name + (parent.name.empty() ? "" : "/") + readableName(shownName);
    place.level = parent.level + 1;
    return place;
}

std::optional<Place> verbatimPlace(const Place& parent, const std::string& entry) {
    if (isPartOfMaildir(entry) || entry.starts_with('.')) {
        return std::nullopt;
    }
    return placeBelow(parent, entry, entry);
}

std::optional<Place> maildirPlusPlusPlace(const Place& parent, const std::string& entry) {
    if (!entry.starts_with('.')) {
        return std::nullopt;
    }
    Place place = placeBelow(parent, entry, entry.substr(1));
    std::replace(place.name.begin(), place.name.end(), '.', '/');
    place.isParent = false;
    return place;
}

std::optional<Place> legacyPlace(const Place& parent, const std::string& entry) {
    const bool isTop = parent.level == 0;
    if (isPartOfMaildir(entry) || entry.starts_with('.') == isTop) {
        return std::nullopt;
    }
    return placeBelow(parent, entry, isTop ? entry : entry.substr(1));
}

std::optional<Place> kMailPlace(const Place& parent, const std::string& entry) {
    if (isKMailContainer(entry)) {
        Place place =
            placeBelow(parent, entry, entry.substr(1, entry.size() - kKMailSuffix.size() - 1));
        place.isFolder = false;
        return place;
    }
    std::optional<Place> place = verbatimPlace(parent, entry);
    if (place) {
        place->isParent = false;
    }
    return place;
}

std::optional<Place> placeIn(Layout layout, const Place& parent, const std::string& entry) {
    switch (layout) {
        case Layout::MaildirPlusPlus:
            return maildirPlusPlusPlace(parent, entry);
        case Layout::Legacy:
            return legacyPlace(parent, entry);
        case Layout::KMail:
            return kMailPlace(parent, entry);
        case Layout::Auto:
        case Layout::Verbatim:
            break;
    }
    return verbatimPlace(parent, entry);
}

// Lists folders level by level. Links come last, and no folder comes twice: a link to a folder of
// the same Maildir does not take its name away, and links in a circle come to an end.
class FolderWalk {
public:
    FolderWalk(const std::string& maildir, Layout layout) : layout_(layout) {
        Place root;
        root.path = maildir;
        root.isFolder = layout != Layout::KMail;
        folders_.push_back(std::move(root));
    }

    std::vector<MailFolder> run() {
        while (!folders_.empty() || !links_.empty()) {
            std::deque<Place>& next = folders_.empty() ? links_ : folders_;
            const Place place = std::move(next.front());
            next.pop_front();
            visit(place);
        }
        std::sort(found_.begin(), found_.end(), [](const auto& one, const auto& other) {
            return std::tie(one.name, one.path) < std::tie(other.name, other.path);
        });
        return std::move(found_);
    }

private:
    void visit(const Place& place) {
        struct stat status {};
        if (::stat(place.path.c_str(), &status) != 0 ||
            !visited_.insert({status.st_dev, status.st_ino}).second) {
            return;
        }
        if (place.isFolder && isMailFolder(place.path)) {
            found_.push_back(
                {place.name.empty() ? std::string(kRootName) : place.name, place.path});
        }
        if (place.isParent && place.level < kMostLevels) {
            addPlacesIn(place);
        }
    }

    void addPlacesIn(const Place& parent) {
        for (const FolderEntry& entry : foldersIn(parent.path)) {
            std::optional<Place> place = placeIn(layout_, parent, entry.name);
            if (place && visited_.size() + folders_.size() + links_.size() < kMostFolders) {
                (entry.isLink ? links_ : folders_).push_back(std::move(*place));
            }
        }
    }

    Layout layout_;
    std::deque<Place> folders_;
    std::deque<Place> links_;
    std::set<std::pair<dev_t, ino_t>> visited_;
    std::vector<MailFolder> found_;
};

bool hasLegacyFolder(const std::string& maildir, const std::vector<FolderEntry>& entries) {
    return std::any_of(entries.begin(), entries.end(), [&](const FolderEntry& top) {
        if (top.name.starts_with('.') || isPartOfMaildir(top.name)) {
            return false;
        }
        const std::string path = appendingPathComponent(maildir, top.name);
        const std::vector<FolderEntry> below = foldersIn(path);
        return std::any_of(below.begin(), below.end(), [&](const FolderEntry& entry) {
            return entry.name.starts_with('.') &&
                   isMailFolder(appendingPathComponent(path, entry.name));
        });
    });
}

std::vector<std::string_view> componentsOf(std::string_view name) {
    std::vector<std::string_view> components;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find('/'), name.size());
        if (end > 0) {
            components.push_back(name.substr(0, end));
        }
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return components;
}

// What stands before and behind a component of a name in its path.
struct Surrounding {
    std::string_view before = "/";
    std::string_view behind;
};

Surrounding surroundingOf(Layout layout, bool isFirst, bool isLast) {
    switch (layout) {
        case Layout::MaildirPlusPlus:
            return {isFirst ? "/." : ".", ""};
        case Layout::Legacy:
            return {isFirst ? "/" : "/.", ""};
        case Layout::KMail:
            return isLast ? Surrounding() : Surrounding{"/.", kKMailSuffix};
        case Layout::Auto:
        case Layout::Verbatim:
            break;
    }
    return {};
}

}  // namespace

std::vector<FolderEntry> foldersIn(const std::string& path) {
    std::vector<FolderEntry> entries;
    std::error_code failure;
    std::filesystem::directory_iterator entry(path, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && entries.size() < kMostFolders) {
            entries.push_back({entry->path().filename().string(), entry->is_symlink(ignored)});
        }
    }
    std::sort(entries.begin(), entries.end(), [](const FolderEntry& one, const FolderEntry& other) {
        return one.name < other.name;
    });
    return entries;
}

bool isMailFolder(const std::string& path) {
    return folderExists(appendingPathComponent(path, "cur"));
}

Layout detectLayout(const std::string& maildir) {
    const std::vector<FolderEntry> entries = foldersIn(maildir);
    const auto hasFolder = [&](bool isHidden) {
        return std::any_of(entries.begin(), entries.end(), [&](const FolderEntry& entry) {
            return entry.name.starts_with('.') == isHidden &&
                   isMailFolder(appendingPathComponent(maildir, entry.name));
        });
    };
    if (hasFolder(true) || (isMailFolder(maildir) && !hasFolder(false))) {
        return Layout::MaildirPlusPlus;
    }
    if (std::any_of(entries.begin(), entries.end(), [](const FolderEntry& entry) {
            return isKMailContainer(entry.name);
        })) {
        return Layout::KMail;
    }
    return hasLegacyFolder(maildir, entries) ? Layout::Legacy : Layout::Verbatim;
}

std::string folderPath(const std::string& maildir, std::string_view name, Layout layout) {
    const std::vector<std::string_view> components = componentsOf(name);
    if (layout == Layout::MaildirPlusPlus && components.size() == 1 &&
        components.front() == kRootName) {
        return maildir;
    }
    std::string path = maildir;
    for (std::size_t index = 0; index < components.size(); ++index) {
        const Surrounding around =
            surroundingOf(layout, index == 0, index + 1 == components.size());
        path.append(around.before).append(components[index]).append(around.behind);
    }
    return path;
}

std::string readableName(std::string_view nameOnDisk) {
    std::optional<std::string> decoded = decodeModifiedUtf7(nameOnDisk);
    return decoded ? std::move(*decoded) : platform::validUtf8(std::string(nameOnDisk));
}

bool hasParentComponent(std::string_view name) {
    const std::vector<std::string_view> components = componentsOf(name);
    return std::find(components.begin(), components.end(), "..") != components.end();
}

std::vector<MailFolder> mailFolders(const std::string& maildir, Layout layout) {
    return FolderWalk(maildir, layout == Layout::Auto ? detectLayout(maildir) : layout).run();
}

}  // namespace quillet::mailhost
