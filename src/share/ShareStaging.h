#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quillet {

// Where one share stages its files. One thread at a time.
class ShareStaging {
public:
    // Nothing is staged.
    ShareStaging() = default;
    // Empties the folder of a service word of the user's choice.
    static ShareStaging inFolderOf(std::string service);
    // Makes a folder that no other share has, so that one share never takes the files of another
    // away before the mail application has read them. Folders that were made here more than a day
    // ago are removed, except those that somebody reads just now.
    static ShareStaging inOwnFolder(std::chrono::system_clock::time_point now);

    // "" where nothing is staged.
    const std::string& service() const noexcept { return service_; }
    // The folder's path; "" where nothing is staged, or the word names no staging folder.
    const std::string& folder() const noexcept { return folder_; }

    // Removes the copies that a share made in vain, and the folder where nothing else is in it.
    void discard(const std::vector<std::string>& copies) const;
    // Removes a folder of this share's own, also while a copy goes on under the folder's lock,
    // which is not waited for and may add a file meanwhile. Others may use a folder of the user's
    // choice.
    void abandon() const;

private:
    explicit ShareStaging(std::string service);

    std::string service_;
    std::string folder_;
    bool isOwn_ = false;
};

}  // namespace quillet
