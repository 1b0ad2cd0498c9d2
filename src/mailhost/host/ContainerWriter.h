#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Result.h"
#include "platform/files/FileCoordinator.h"

namespace quillet::mailhost {

// Writes the container that the widget reads, and never touches what another program wrote there.
// A list in the host's state folder says which files are the host's own, and what it wrote into
// them. One program at a time uses the list (the host holds a lock on its state folder). One
// thread; never waits for a lock.
class ContainerWriter {
public:
    // Files by their paths below the data folder, "Accounts.plist" or "Today/ACCOUNT/NAME".
    using Files = std::map<std::string, std::string>;

    // `listFile` keeps what was written; it need not exist yet.
    ContainerWriter(std::string dataFolder, std::string listFile);

    // What publish() changed. An error, with nothing or only a part written:
    // - EWOULDBLOCK: somebody reads; try again soon.
    // - EEXIST: a file that another program wrote stands in the way.
    // - others: the disk or the lock.
    struct Changes {
        std::set<std::string> files;  // written or removed, by their paths
    };

    // Makes the host's files in the container exactly `files`: writes those that differ, each one
    // whole, and removes those that it wrote before and that are not among them. Files with the
    // right contents are not written again. What lies in the folders `kept` stays as it is.
    platform::Result<Changes> publish(const Files& files, const std::set<std::string>& kept = {});

private:
    using Digests = std::set<std::string>;  // SHA-256 of contents that this host wrote or may write

    std::optional<platform::Error> readList();
    std::optional<platform::Error> writeList();
    std::string pathOf(const std::string& file) const;
    std::optional<platform::Error> foreignFile(const Files& files);
    std::optional<platform::Error> foreignNeighbour(const std::string& folder) const;
    std::optional<platform::Error> writeChanges(const Files& files, const Changes& changes) const;
    std::optional<platform::Error> writeOne(const Files& files, const std::string& file) const;
    Changes changesFor(const Files& files, const std::set<std::string>& kept);
    std::optional<platform::Error> intend(const Files& files, const Changes& changes);
    void settle(const Files& files, const Changes& changes);

    std::string dataFolder_;
    std::string listFile_;
    platform::FileCoordinator coordinator_;
    bool isListRead_ = false;
    std::map<std::string, Digests> written_;
    std::optional<std::string> listOnDisk_;  // as this host wrote it
};

}  // namespace quillet::mailhost
