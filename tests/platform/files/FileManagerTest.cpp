#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;

using platform::ByteBuffer;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

// The code of an operation's error, or 0.
std::int64_t codeOf(const std::optional<platform::Error>& error) {
    return error ? error->code : 0;
}

const std::string kLarge = std::string(3'000'000, 'x') + std::string("\0end", 4);

class FileManagerTest : public testing::Test {
protected:
    FileManagerTest() {
        folder_.makeFolder("folder");
        EXPECT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    }
    void link(const std::string& target, const std::string& name) const {
        ASSERT_EQ(::symlink(target.c_str(), path(name).c_str()), 0);
    }
    void makeFolder(const std::string& name, mode_t mode) const {
        ASSERT_EQ(::chmod(folder_.makeFolder(name).c_str(), mode), 0);
    }
    // Absolute names stay, others are below the test's folder.
    std::string path(const std::string& name) const {
        return name.starts_with('/') ? name : folder_.path(name);
    }
    mode_t modeOf(const std::string& name) const {
        struct stat found {};
        EXPECT_EQ(::stat(path(name).c_str(), &found), 0);
        return found.st_mode & 07777U;
    }
    // The text of the file, or the error's code. The buffer is used again and ends in zeros.
    std::string read(const std::string& name, std::size_t limit = 10'000'000) {
        if (const auto error = FileManager::readFile(path(name), bytes_, limit)) {
            return std::to_string(error->code);
        }
        const std::string_view padding(bytes_.data() + bytes_.size(), ByteBuffer::kPadding);
        EXPECT_EQ(padding.find_first_not_of('\0'), std::string_view::npos);
        return std::string(bytes_.view());
    }
    std::int64_t replace(const std::string& name) const {
        return codeOf(FileManager::writeFileAtomically(path(name), kLarge));
    }
    std::int64_t copy(const std::string& from, const std::string& to) const {
        return codeOf(FileManager::copyFile(path(from), path(to)));
    }
    std::vector<std::string> entries(const std::string& name) const {
        return FileManager::contentsOfFolder(path(name)).value();
    }

    TemporaryFolder folder_;
    ByteBuffer bytes_;
};

TEST_F(FileManagerTest, OnlyRegularFilesAreReadToTheirEndOrTheLimitAndNothingIsWaitedFor) {
    folder_.writeFile("name \xFF", "12345");
    link("name \xFF", "link");
    EXPECT_EQ(read("fifo"), std::to_string(EINVAL));
    EXPECT_EQ(read("folder"), std::to_string(EISDIR));
    EXPECT_EQ(read("missing"), std::to_string(ENOENT));
    EXPECT_EQ(read("link", 5), "12345");
    EXPECT_EQ(read("link", 4), std::to_string(EFBIG));
    EXPECT_THAT(read("/proc/self/status"), HasSubstr("Name:"));  // the system says 0 bytes
    EXPECT_EQ(read("/proc/self/status", 4), std::to_string(EFBIG));
}

TEST_F(FileManagerTest, AFileIsReplacedWholeAndKeepsItsModeAndAFailedWriteLeavesNothing) {
    ASSERT_EQ(::chmod(folder_.writeFile("folder/file", "old").c_str(), 0604), 0);
    link("folder/file", "link");
    folder_.writeFile("folder/taken/\xFE\xFF", "");
    const mode_t mask = ::umask(027);
    EXPECT_EQ(replace("link"), 0);
    EXPECT_EQ(replace("folder/made"), 0);
    ::umask(mask);
    EXPECT_EQ(read("folder/file"), kLarge);
    EXPECT_EQ(modeOf("folder/file"), 0604U);
    EXPECT_EQ(modeOf("folder/made"), 0640U);
    EXPECT_EQ(replace("folder/taken"), EISDIR);
    EXPECT_EQ(replace("missing/file"), ENOENT);
    EXPECT_EQ(replace("fifo"), EINVAL);
    EXPECT_THAT(entries(""), UnorderedElementsAre("fifo", "folder", "link"));
    EXPECT_THAT(entries("folder"), UnorderedElementsAre("file", "made", "taken"));
    EXPECT_THAT(entries("folder/taken"), UnorderedElementsAre("\xFE\xFF"));
    EXPECT_EQ(FileManager::contentsOfFolder(path("link")).error().code, ENOTDIR);
}

TEST_F(FileManagerTest, WhatIsNoRegularFileIsWrittenIntoWhereTheUserSaysSo) {
    link("fifo", "link");
    const platform::FileDescriptor reader(::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK));
    EXPECT_FALSE(FileManager::writeFile(path("link"), "text"));
    char bytes[8];
    EXPECT_EQ(::read(reader.get(), bytes, sizeof bytes), 4);
    EXPECT_EQ(codeOf(FileManager::writeFile("/dev/full", "text")), ENOSPC);
    EXPECT_EQ(codeOf(FileManager::writeFile(path("folder"), "text")), EISDIR);
    EXPECT_FALSE(FileManager::writeFile(path("made"), "text"));
    EXPECT_EQ(read("made"), "text");
}

TEST_F(FileManagerTest, ACopyIsWholeOrNotThereAtAll) {
    folder_.writeFile("large", kLarge);
    link("large", "link");
    folder_.writeFile("empty", "");
    folder_.writeFile("folder/taken", "old");
    link("nowhere", "folder/broken");
    EXPECT_EQ(copy("link", "copy"), 0);
    EXPECT_EQ(read("copy"), kLarge);
    EXPECT_FALSE(std::filesystem::is_symlink(path("copy")));
    EXPECT_EQ(copy("empty", "copy \xFF"), 0);
    EXPECT_EQ(read("copy \xFF"), "");
    EXPECT_EQ(copy("/proc/meminfo", "made up"), 0);
    EXPECT_THAT(read("made up"), HasSubstr("MemTotal"));  // the system says 0 bytes
    EXPECT_EQ(copy("missing", "folder/new"), ENOENT);
    EXPECT_EQ(copy("folder", "folder/new"), EISDIR);
    EXPECT_EQ(copy(std::string("large\0", 6), "folder/new"), EINVAL);
    EXPECT_EQ(copy("large", "folder/taken"), EEXIST);
    EXPECT_EQ(copy("large", "folder/broken"), EEXIST);
    const FileSizeLimit diskFull(2'000'000);
    EXPECT_EQ(copy("large", "folder/new"), EFBIG);
    // Has less than the page that the system says, like a file that shrinks.
    EXPECT_EQ(copy("/sys/devices/system/cpu/online", "folder/new"), ESTALE);
    EXPECT_THAT(entries("folder"), UnorderedElementsAre("taken", "broken"));
}

TEST_F(FileManagerTest, NewFoldersAreForTheUserAloneAndRemovingOneLeavesWhatItsLinksPointTo) {
    makeFolder("old", 0755);
    EXPECT_FALSE(FileManager::createFolder(path("old/new//below/")));
    EXPECT_EQ(modeOf("old"), 0755U);
    EXPECT_EQ(modeOf("old/new"), 0700U);
    EXPECT_EQ(modeOf("old/new/below"), 0700U);
    const std::string file = folder_.writeFile("folder/\xFF", "");
    EXPECT_EQ(codeOf(FileManager::createFolder(file)), ENOTDIR);
    EXPECT_EQ(codeOf(FileManager::createFolder(file + "/below")), ENOTDIR);

    link("../../folder", "old/new/link");
    link("folder", "link");
    EXPECT_FALSE(FileManager::removeItem(path("old")));
    EXPECT_FALSE(FileManager::removeItem(path("link")));
    EXPECT_EQ(codeOf(FileManager::removeItem(path("old"))), ENOENT);
    EXPECT_THAT(entries(""), UnorderedElementsAre("fifo", "folder"));
    EXPECT_THAT(entries("folder"), UnorderedElementsAre("\xFF"));
    EXPECT_FALSE(FileManager::removeItem(path("folder")));
}

TEST(FileManager, TheContainerLiesWhereTheEnvironmentTells) {
    const std::optional<std::string> cases[][4] = {
        {"/c", "/d", "/h", "/c"},
        {"c/d", "/d", "/h", std::filesystem::current_path() / "c/d"},
        {"", "/d", "/h", {}},
        {{}, "/d/", "/h", "/d/group-containers/G"},
        {{}, "d", "/h", "/h/.local/share/group-containers/G"},
        {{}, {}, "/h", "/h/.local/share/group-containers/G"},
        {{}, {}, {}, {}},
    };
    for (const auto& [given, dataFolder, homeFolder, expected] : cases) {
        const EnvironmentVariable container("QUILLET_CONTAINER", given);
        const EnvironmentVariable data("XDG_DATA_HOME", dataFolder);
        const EnvironmentVariable home("HOME", homeFolder);
        EXPECT_EQ(FileManager::containerPathForGroup("G"), expected);
    }
}

TEST_F(FileManagerTest, TheRuntimeFolderIsPrivateToTheUserOrRefused) {
    const EnvironmentVariable temporary("TMPDIR", folder_.path());
    makeFolder("private", 0700);
    makeFolder("others", 0700);
    makeFolder("open", 0755);
    const bool isGivenAway = ::chown(path("others").c_str(), 1, 1) == 0;  // only by root
    const std::string own = "quillet-" + std::to_string(::geteuid());
    const std::pair<std::optional<std::string>, std::string> cases[] = {
        {path("private"), "private"},
        {"relative", own},
        {path("missing"), own},
        {path("open"), own},
        {path("others"), isGivenAway ? own : "others"},
        {std::nullopt, own},
    };
    for (const auto& [session, expected] : cases) {
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", session);
        EXPECT_EQ(FileManager::runtimeFolder().value(), path(expected));
        EXPECT_EQ(modeOf(expected), 0700U);
    }
    const EnvironmentVariable unset("XDG_RUNTIME_DIR", std::nullopt);
    makeFolder(own, 0750);
    EXPECT_FALSE(FileManager::runtimeFolder());
    std::filesystem::remove(path(own));
    link("private", own);
    EXPECT_FALSE(FileManager::runtimeFolder());
}

TEST(Path, PartsAreTakenApartAndJoinedWithOneSlash) {
    const char* const cases[][4] = {
        {"report.tar.gz", "report.tar.gz", "gz", "report.tar"},
        {"/a.b/notes", "notes", "", "/a.b/notes"},
        {"/a/.profile", ".profile", "", "/a/.profile"},
        {"/a/name.", "name.", "", "/a/name."},
        {"/a/folder.d//", "folder.d", "d", "/a/folder"},
        {"/", "/", "", "/"},
        {"", "", "", ""},
    };
    for (const auto& [path, last, extension, rest] : cases) {
        EXPECT_EQ(Path::lastPathComponent(path), last);
        EXPECT_EQ(Path::pathExtension(path), extension) << path;
        EXPECT_EQ(Path::deletingPathExtension(path), rest);
    }
    EXPECT_EQ(Path::appendingPathComponent("/a//", "//b/c/"), "/a/b/c");
    EXPECT_EQ(Path::appendingPathComponent("/", "b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("", "/b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("/a/", ""), "/a");
    EXPECT_EQ(Path::appendingPathExtension("/a/Accounts/", "plist"), "/a/Accounts.plist");
}

}  // namespace
}  // namespace quillet::test
