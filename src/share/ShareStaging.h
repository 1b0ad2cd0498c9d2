#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quillet {

// The folder in which one share stages its files. One thread at a time.
class ShareStaging {
public:
    // Stages nothing.
    ShareStaging() = default;
    // Uses the folder of a service word that the user has chosen, and empties it.
    static ShareStaging inFolderOf(std::string service);
    // Makes a folder that no other share uses, so that no share removes the files of another before
    // the mail application has read them. Removes folders that were made here more than a day
    // before `now`, except those that somebody is reading.
    static ShareStaging inOwnFolder(std::chrono::system_clock::time_point now);

    // "" if nothing is staged.
    const std::string& service() const noexcept { return service_; }
    // The folder's path; "" if nothing is staged, or the word does not name a staging folder.
    const std::string& folder() const noexcept { return folder_; }

    // Removes the copies of a share that failed, and the folder if nothing else is in it.
    void discard(const std::vector<std::string>& copies) const;
    // Removes the folder that inOwnFolder() made, without waiting for a copy that still runs under
    // the folder's lock and may add a file meanwhile. Folders that the user has chosen are kept,
    // since others may use them.
    void abandon() const;

private:
    explicit ShareStaging(std::string service);

    std::string service_;
    std::string folder_;
    bool isOwn_ = false;
};

}  // namespace quillet
