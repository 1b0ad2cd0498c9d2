#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/foundation/FileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

namespace FileManager = platform::FileManager;
using platform::ByteBuffer;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr std::size_t kNoLimit = std::size_t{1} << 40;

// The text of the file, or "error" and the error's code.
std::string readText(const std::string& path, std::size_t limit = kNoLimit) {
    ByteBuffer bytes;
    if (const auto error = FileManager::readFile(path, bytes, limit)) {
        return "error " + std::to_string(error->code);
    }
    return std::string(bytes.view());
}

std::string errorText(int code) {
    return "error " + std::to_string(code);
}

void makeSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::strcpy(address.sun_path, path.c_str());
    const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(server);
}

mode_t modeOf(const std::string& path) {
    struct stat found {};
    EXPECT_EQ(::stat(path.c_str(), &found), 0);
    return found.st_mode & 07777U;
}

TEST(FileManager, OnlyRegularFilesAreReadAndNothingIsWaitedFor) {
    const TemporaryFolder folder;
    folder.writeFile("file", "text");
    folder.writeFile("empty", "");
    folder.writeFile("name \xFF", "not UTF-8");
    folder.makeFolder("folder");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    makeSocket(folder.path("socket"));
    ASSERT_EQ(::symlink("file", folder.path("link").c_str()), 0);
    ASSERT_EQ(::symlink("fifo", folder.path("link to fifo").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", folder.path("link to device").c_str()), 0);
    ASSERT_EQ(::symlink("loop", folder.path("loop").c_str()), 0);
    const std::pair<std::string, std::string> cases[] = {
        {"file", "text"},
        {"empty", ""},
        {"name \xFF", "not UTF-8"},
        {"link", "text"},
        {"fifo", errorText(EINVAL)},
        {"link to fifo", errorText(EINVAL)},
        {"socket", errorText(EINVAL)},
        {"folder", errorText(EINVAL)},
        {"link to device", errorText(EINVAL)},
        {"loop", errorText(ELOOP)},
        {"missing", errorText(ENOENT)},
        {"file/below", errorText(ENOTDIR)},
    };
    for (const auto& [name, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readText(folder.path(name)), expected);
    }
}

TEST(FileManager, AFileIsReadToItsEndWhateverLengthTheSystemTells) {
    EXPECT_THAT(readText("/proc/self/status"), testing::HasSubstr("Name:"));  // tells 0 bytes
    const std::string tellsAPage = "/sys/kernel/mm/transparent_hugepage/enabled";
    if (FileManager::fileExists(tellsAPage)) {
        EXPECT_LT(readText(tellsAPage).size(), 100U);
    }
}

TEST(FileManager, TheLimitIsTheLongestFileThatIsRead) {
    const TemporaryFolder folder;
    const std::string path = folder.writeFile("file", "12345");
    EXPECT_EQ(readText(path, 5), "12345");
    EXPECT_EQ(readText(path, 4), errorText(EFBIG));
    EXPECT_EQ(readText("/proc/self/status", 4), errorText(EFBIG));
}

TEST(FileManager, ABufferHoldsTheLastFileAloneAndZerosBehindIt) {
    const TemporaryFolder folder;
    ByteBuffer bytes;
    ASSERT_FALSE(FileManager::readFile(
        folder.writeFile("long", std::string(100'000, 'x')), bytes, kNoLimit));
    const char* const storage = bytes.data();
    ASSERT_FALSE(FileManager::readFile(folder.writeFile("short", "ab"), bytes, kNoLimit));
    EXPECT_EQ(bytes.view(), "ab");
    EXPECT_EQ(bytes.data(), storage);
    EXPECT_TRUE(std::all_of(bytes.data() + 2, bytes.data() + 2 + ByteBuffer::kPadding, [](char c) {
        return c == '\0';
    }));
}

TEST(FileManager, AFolderIsListedWithEveryName) {
    const TemporaryFolder folder;
    folder.writeFile(".hidden", "");
    folder.writeFile("\xFE\xFF", "");
    folder.makeFolder("below");
    const auto names = FileManager::contentsOfFolder(folder.path());
    ASSERT_TRUE(names);
    EXPECT_THAT(names.value(), UnorderedElementsAre(".hidden", "\xFE\xFF", "below"));
    EXPECT_EQ(FileManager::contentsOfFolder(folder.path("missing")).error().code, ENOENT);
    EXPECT_EQ(FileManager::contentsOfFolder(folder.path(".hidden")).error().code, ENOTDIR);
}

TEST(FileManager, AFileIsReplacedWholeAndKeepsItsMode) {
    const TemporaryFolder folder;
    const std::string path = folder.writeFile("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_EQ(::symlink("file", folder.path("link").c_str()), 0);
    EXPECT_FALSE(FileManager::writeFileAtomically(folder.path("link"), "new"));
    EXPECT_EQ(readText(path), "new");
    EXPECT_EQ(modeOf(path), 0640U);

    const mode_t mask = ::umask(027);
    EXPECT_FALSE(FileManager::writeFileAtomically(folder.path("made"), std::string(300'000, 'y')));
    ::umask(mask);
    EXPECT_EQ(modeOf(folder.path("made")), 0640U);
    EXPECT_EQ(readText(folder.path("made")), std::string(300'000, 'y'));
    EXPECT_THAT(FileManager::contentsOfFolder(folder.path()).value(),
                UnorderedElementsAre("file", "link", "made"));
}

TEST(FileManager, AFailedWriteLeavesNothingBehind) {
    const TemporaryFolder folder;
    folder.writeFile("taken/file", "");
    EXPECT_EQ(FileManager::writeFileAtomically(folder.path("taken"), "text")->code, EISDIR);
    EXPECT_EQ(FileManager::writeFileAtomically(folder.path("missing/file"), "text")->code, ENOENT);
    EXPECT_THAT(FileManager::contentsOfFolder(folder.path()).value(),
                UnorderedElementsAre("taken"));
}

TEST(FileManager, AFolderIsMadeWithThoseAboveIt) {
    const TemporaryFolder folder;
    EXPECT_FALSE(FileManager::createFolder(folder.path("a/b/c")));
    EXPECT_FALSE(FileManager::createFolder(folder.path("a/b/c")));
    EXPECT_TRUE(FileManager::folderExists(folder.path("a/b/c")));
    folder.writeFile("file", "");
    EXPECT_TRUE(FileManager::createFolder(folder.path("file")));
    EXPECT_TRUE(FileManager::createFolder(folder.path("file/below")));
    EXPECT_FALSE(FileManager::folderExists(folder.path("file")));
}

TEST(FileManager, TheContainerLiesWhereTheEnvironmentTells) {
    const struct {
        const char* name;
        std::optional<std::string> container, data, home, expected;
    } cases[] = {
        {"given", "/c", "/d", "/h", "/c"},
        {"given as none", "", "/d", "/h", std::nullopt},
        {"data folder", std::nullopt, "/d/", "/h", "/d/group-containers/G"},
        {"relative data folder", std::nullopt, "d", "/h", "/h/.local/share/group-containers/G"},
        {"empty data folder", std::nullopt, "", "/h", "/h/.local/share/group-containers/G"},
        {"home", std::nullopt, std::nullopt, "/h", "/h/.local/share/group-containers/G"},
        {"nothing", std::nullopt, std::nullopt, std::nullopt, std::nullopt},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const EnvironmentVariable container("QUILLET_CONTAINER", row.container);
        const EnvironmentVariable data("XDG_DATA_HOME", row.data);
        const EnvironmentVariable home("HOME", row.home);
        EXPECT_EQ(FileManager::containerPathForGroup("G"), row.expected);
    }
}

TEST(FileManager, TheRuntimeFolderIsPrivateToTheUserOrRefused) {
    const TemporaryFolder folder;
    const EnvironmentVariable unset("XDG_RUNTIME_DIR", "relative");
    const EnvironmentVariable temporary("TMPDIR", folder.path());
    const auto made = FileManager::runtimeFolder();
    ASSERT_TRUE(made);
    EXPECT_EQ(made.value(), folder.path("quillet-" + std::to_string(::geteuid())));
    EXPECT_EQ(modeOf(made.value()), 0700U);
    EXPECT_TRUE(FileManager::runtimeFolder());

    ASSERT_EQ(::chmod(made.value().c_str(), 0750), 0);
    EXPECT_FALSE(FileManager::runtimeFolder());
    std::filesystem::rename(made.value(), folder.path("elsewhere"));
    ASSERT_EQ(::chmod(folder.path("elsewhere").c_str(), 0700), 0);
    ASSERT_EQ(::symlink("elsewhere", made.value().c_str()), 0);
    EXPECT_FALSE(FileManager::runtimeFolder());
}

}  // namespace
}  // namespace quillet::test
