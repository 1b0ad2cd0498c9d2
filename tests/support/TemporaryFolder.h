#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

namespace quillet::test {

// A new empty folder. The destructor removes it with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("no temporary folder can be made");
        }
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(std::string_view below) const { return path_ + "/" + std::string(below); }

    // These also create the folders above, and return the path.
    std::string makeFolder(std::string_view below) const {
        std::filesystem::create_directories(path(below));
        return path(below);
    }
    std::string writeFile(std::string_view below, std::string_view bytes) const {
        const std::filesystem::path file = path(below);
        std::filesystem::create_directories(file.parent_path());
        if (!(std::ofstream(file, std::ios::binary) << bytes << std::flush)) {
            throw std::runtime_error("cannot write " + file.string());
        }
        return file.string();
    }

private:
    // In memory if possible, since a test may create thousands of files.
    std::string path_ =
        (::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path()) /
        "quillet-test-XXXXXX";
};

}  // namespace quillet::test
