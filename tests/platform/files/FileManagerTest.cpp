#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {
namespace {

namespace FileManager = platform::FileManager;
using platform::ByteBuffer;
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

mode_t modeOf(const std::string& path) {
    struct stat found {};
    EXPECT_EQ(::stat(path.c_str(), &found), 0);
    return found.st_mode & 07777U;
}

TEST(FileManager, OnlyRegularFilesAreReadAndNothingIsWaitedFor) {
    const TemporaryFolder folder;
    folder.writeFile("file", "text");
    folder.writeFile("name \xFF", "not UTF-8");
    folder.makeFolder("folder");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("file", folder.path("link").c_str()), 0);
    ASSERT_EQ(::symlink("fifo", folder.path("link to fifo").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", folder.path("link to device").c_str()), 0);
    const std::pair<std::string, std::string> cases[] = {
        {"file", "text"},
        {"name \xFF", "not UTF-8"},
        {"link", "text"},
        {"fifo", errorText(EINVAL)},
        {"link to fifo", errorText(EINVAL)},
        {"folder", errorText(EISDIR)},
        {"link to device", errorText(EINVAL)},
        {"missing", errorText(ENOENT)},
    };
    for (const auto& [name, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readText(folder.path(name)), expected);
    }
}

TEST(FileManager, AFileIsReadToItsEndOrItsLimitWhateverLengthTheSystemTells) {
    const TemporaryFolder folder;
    const std::string path = folder.writeFile("file", "12345");
    EXPECT_EQ(readText(path, 5), "12345");
    EXPECT_EQ(readText(path, 4), errorText(EFBIG));
    EXPECT_THAT(readText("/proc/self/status"), testing::HasSubstr("Name:"));  // tells 0 bytes
    EXPECT_EQ(readText("/proc/self/status", 4), errorText(EFBIG));
}

TEST(FileManager, ABufferHoldsTheLastFileAloneAndZerosBehindIt) {
    const TemporaryFolder folder;
    ByteBuffer bytes;
    const std::string path = folder.writeFile("long", std::string(100'000, 'x'));
    ASSERT_FALSE(FileManager::readFile(path, bytes, kNoLimit));
    ASSERT_FALSE(FileManager::readFile(folder.writeFile("short", "ab"), bytes, kNoLimit));
    EXPECT_EQ(bytes.view(), "ab");
    EXPECT_EQ(std::string(bytes.data() + 2, ByteBuffer::kPadding),
              std::string(ByteBuffer::kPadding, '\0'));
}

TEST(FileManager, AFileIsReplacedWholeAndKeepsItsModeAndAFailedWriteLeavesNothing) {
    const TemporaryFolder folder;
    const std::string path = folder.writeFile("file", "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_EQ(::symlink("file", folder.path("link").c_str()), 0);
    const std::string text(300'000, 'y');
    EXPECT_FALSE(FileManager::writeFileAtomically(folder.path("link"), text));
    EXPECT_EQ(readText(path), text);
    EXPECT_EQ(modeOf(path), 0640U);

    const mode_t mask = ::umask(027);
    EXPECT_FALSE(FileManager::writeFileAtomically(folder.path("made"), text));
    ::umask(mask);
    EXPECT_EQ(modeOf(folder.path("made")), 0640U);

    folder.writeFile("taken/\xFE\xFF", "");
    EXPECT_EQ(FileManager::writeFileAtomically(folder.path("taken"), "text")->code, EISDIR);
    EXPECT_EQ(FileManager::writeFileAtomically(folder.path("missing/file"), "text")->code, ENOENT);
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(FileManager::writeFileAtomically(folder.path("fifo"), "text")->code, EINVAL);
    EXPECT_THAT(FileManager::contentsOfFolder(folder.path()).value(),
                UnorderedElementsAre("fifo", "file", "link", "made", "taken"));
    EXPECT_THAT(FileManager::contentsOfFolder(folder.path("taken")).value(),
                UnorderedElementsAre("\xFE\xFF"));
    EXPECT_EQ(FileManager::contentsOfFolder(folder.path("file")).error().code, ENOTDIR);
}

TEST(FileManager, WhatIsNoRegularFileIsWrittenIntoWhereTheUserSaysSo) {
    const TemporaryFolder folder;
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(::symlink("fifo", folder.path("link").c_str()), 0);
    const platform::FileDescriptor reader(::open(fifo.c_str(), O_RDONLY | O_NONBLOCK));
    EXPECT_FALSE(FileManager::writeFile(folder.path("link"), "text"));
    std::string read(8, '\0');
    read.resize(static_cast<std::size_t>(::read(reader.get(), read.data(), read.size())));
    EXPECT_EQ(read, "text");
    EXPECT_TRUE(std::filesystem::is_fifo(fifo));
    EXPECT_EQ(FileManager::writeFile("/dev/full", "text")->code, ENOSPC);
    EXPECT_EQ(FileManager::writeFile(folder.path(), "text")->code, EISDIR);
    EXPECT_FALSE(FileManager::writeFile(folder.path("made"), "text"));
    EXPECT_EQ(readText(folder.path("made")), "text");
}

TEST(FileManager, ACopyIsWholeOrNotThereAtAll) {
    const TemporaryFolder folder;
    const std::string text = std::string(3'000'000, 'x') + std::string("\0end", 4);
    folder.writeFile("large", text);
    folder.writeFile("empty", "");
    folder.writeFile("name \xFF", "bytes");
    ASSERT_EQ(::symlink("large", folder.path("link").c_str()), 0);
    const std::pair<std::string, std::string> copies[] = {
        {"large", text}, {"empty", ""}, {"name \xFF", "bytes"}, {"link", text}};
    for (const auto& [name, expected] : copies) {
        SCOPED_TRACE(name);
        const std::string copy = folder.makeFolder("copies") + "/" + name;
        EXPECT_FALSE(FileManager::copyFile(folder.path(name), copy));
        EXPECT_EQ(readText(copy), expected);
        EXPECT_FALSE(std::filesystem::is_symlink(copy));
    }
    EXPECT_FALSE(FileManager::copyFile("/proc/meminfo", folder.path("made up")));
    EXPECT_THAT(readText(folder.path("made up")), testing::HasSubstr("MemTotal"));  // tells 0 bytes

    const std::string target = folder.makeFolder("target");
    folder.writeFile("target/taken", "old");
    ASSERT_EQ(::symlink("nowhere", (target + "/link").c_str()), 0);
    const FileSizeLimit diskFull(2'000'000);
    const struct {
        std::string source, name;
        int code;
    } failures[] = {
        {"missing", "new", ENOENT},
        {"copies", "new", EISDIR},
        {std::string("empty\0", 6), "new", EINVAL},
        {"empty", "taken", EEXIST},
        {"empty", "link", EEXIST},
        {"large", "new", EFBIG},
        // Tells a page and holds less, like a file that shrinks.
        {"/../../../sys/devices/system/cpu/online", "new", ESTALE},
    };
    for (const auto& row : failures) {
        SCOPED_TRACE(row.source + " to " + row.name);
        const auto error = FileManager::copyFile(folder.path(row.source), target + "/" + row.name);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code, row.code);
        EXPECT_THAT(FileManager::contentsOfFolder(target).value(),
                    UnorderedElementsAre("taken", "link"));
    }
}

TEST(FileManager, RemovingAFolderLeavesWhatItsLinksPointTo) {
    const TemporaryFolder folder;
    folder.writeFile("kept/file", "text");
    folder.writeFile("folder/sub/\xFF", "");
    ASSERT_EQ(::symlink("../kept", folder.path("folder/link").c_str()), 0);
    ASSERT_EQ(::symlink("kept", folder.path("link").c_str()), 0);
    EXPECT_FALSE(FileManager::removeItem(folder.path("folder")));
    EXPECT_FALSE(FileManager::removeItem(folder.path("link")));
    EXPECT_EQ(FileManager::removeItem(folder.path("folder"))->code, ENOENT);
    EXPECT_THAT(FileManager::contentsOfFolder(folder.path()).value(), UnorderedElementsAre("kept"));
    EXPECT_EQ(readText(folder.path("kept/file")), "text");
}

TEST(FileManager, NewFoldersAreForTheUserAlone) {
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.makeFolder("old").c_str(), 0755), 0);
    EXPECT_FALSE(FileManager::createFolder(folder.path("old/new//below/")));
    EXPECT_EQ(modeOf(folder.path("old")), 0755U);
    EXPECT_EQ(modeOf(folder.path("old/new")), 0700U);
    EXPECT_EQ(modeOf(folder.path("old/new/below")), 0700U);
    const std::string file = folder.writeFile("file", "");
    EXPECT_EQ(FileManager::createFolder(file)->code, ENOTDIR);
    EXPECT_EQ(FileManager::createFolder(file + "/below")->code, ENOTDIR);
}

TEST(FileManager, TheContainerLiesWhereTheEnvironmentTells) {
    const struct {
        const char* name;
        std::optional<std::string> container, data, home, expected;
    } cases[] = {
        {"given", "/c", "/d", "/h", "/c"},
        {"given as relative", "c/d", "/d", "/h", std::filesystem::current_path() / "c/d"},
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
    const EnvironmentVariable temporary("TMPDIR", folder.path());
    ASSERT_EQ(::chmod(folder.makeFolder("private").c_str(), 0700), 0);
    ASSERT_EQ(::chmod(folder.makeFolder("others").c_str(), 0700), 0);
    ASSERT_EQ(::chmod(folder.makeFolder("open").c_str(), 0755), 0);
    const bool isGivenAway = ::chown(folder.path("others").c_str(), 1, 1) == 0;  // only by root
    const std::string own = "quillet-" + std::to_string(::geteuid());
    const std::pair<std::string, std::string> cases[] = {
        {folder.path("private"), "private"},
        {"relative", own},
        {folder.path("missing"), own},
        {folder.path("open"), own},
        {folder.path("others"), isGivenAway ? own : "others"},
    };
    for (const auto& [session, expected] : cases) {
        SCOPED_TRACE(session);
        const EnvironmentVariable runtime("XDG_RUNTIME_DIR", session);
        const auto chosen = FileManager::runtimeFolder();
        ASSERT_TRUE(chosen);
        EXPECT_EQ(chosen.value(), folder.path(expected));
        EXPECT_EQ(modeOf(chosen.value()), 0700U);
    }

    const EnvironmentVariable unset("XDG_RUNTIME_DIR", std::nullopt);
    const auto made = FileManager::runtimeFolder();
    ASSERT_TRUE(made);
    ASSERT_EQ(::chmod(made.value().c_str(), 0750), 0);
    EXPECT_FALSE(FileManager::runtimeFolder());
    std::filesystem::rename(made.value(), folder.path("elsewhere"));
    ASSERT_EQ(::chmod(folder.path("elsewhere").c_str(), 0700), 0);
    ASSERT_EQ(::symlink("elsewhere", made.value().c_str()), 0);
    EXPECT_FALSE(FileManager::runtimeFolder());
}

}  // namespace
}  // namespace quillet::test
