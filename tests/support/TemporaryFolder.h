#pragma once

#include <string>
#include <string_view>

namespace quillet::test {

// A new empty folder. The destructor removes it with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string path(std::string_view below) const;
    // These also create the folders above, and return the path.
    std::string makeFolder(std::string_view below) const;
    std::string writeFile(std::string_view below, std::string_view bytes) const;

private:
    std::string path_;
};

}  // namespace quillet::test
