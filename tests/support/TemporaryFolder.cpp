#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace quillet::test {

namespace fs = std::filesystem;

namespace {

// In memory if possible, since a test may create a hundred thousand files.
fs::path parentFolder() {
    const fs::path memory = "/dev/shm";
    return access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path();
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (parentFolder() / "quillet-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder can be made");
    }
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::path(std::string_view below) const {
    return path_ + "/" + std::string(below);
}

std::string TemporaryFolder::makeFolder(std::string_view below) const {
    fs::create_directories(path(below));
    return path(below);
}

std::string TemporaryFolder::writeFile(std::string_view below, std::string_view bytes) const {
    const fs::path file = path(below);
    fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file.string();
}

}  // namespace quillet::test
