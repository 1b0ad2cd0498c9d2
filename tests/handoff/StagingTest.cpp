#include <atomic>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "handoff/ExtensionUtilities.h"
#include "tests/handoff/ContainerFixture.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using ExtensionUtilities::ShareDatas;
using ExtensionUtilities::ShareFiles;
using ExtensionUtilities::ShareInit;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

using StagingTest = ContainerFixture;

TEST_F(StagingTest, AFolderIsEmptiedAndOneThatWasNotThereIsLogged) {
    ShareInit("share");
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("shareInit delete ")));
    EXPECT_THAT(stagedNames(), IsEmpty());

    files.writeFile("kept", "text");
    container.writeFile("SharedData/share/old/file", "");
    ASSERT_EQ(::symlink(files.path().c_str(), staged("link").c_str()), 0);
    ShareInit("share");
    EXPECT_THAT(stagedNames(), IsEmpty());
    EXPECT_EQ(contents(files.path("kept")), "text");
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(StagingTest, AFolderThatCannotBeMadeIsLogged) {
    container.writeFile("SharedData", "no folder");
    ShareInit("share");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("shareInit delete "), StartsWith("shareInit create ")));
}

TEST_F(StagingTest, CopiesKeepNamesAndContentsAndNoneReplacesAnother) {
    ShareInit("share");
    const std::vector<std::string> sources = {
        files.writeFile("one/report.tar.gz", "1"),
        files.writeFile("two/report.tar.gz", "2"),
        files.writeFile("name \xFF\n", "3"),
        files.writeFile("image.png", "4"),
        files.writeFile(".hidden", ""),
    };
    const std::vector<std::string> expected = {staged("report.tar.gz"),
                                               staged("report.tar_1.gz"),
                                               staged("name \xFF\n"),
                                               staged("image.png"),
                                               staged(".hidden")};
    EXPECT_EQ(ShareFiles("share", sources), expected);
    for (std::size_t at = 0; at < sources.size(); ++at) {
        EXPECT_EQ(contents(expected[at]), contents(sources[at]));
    }
    EXPECT_THAT(ShareDatas("share", {"5", std::string_view("\0", 1), "6"}),
                ElementsAre(staged("image_1.png"), staged("image_2.png"), staged("image_3.png")));
    EXPECT_EQ(contents(staged("image_2.png")), std::string(1, '\0'));
    EXPECT_EQ(stagedNames().size(), sources.size() + 3);
}

TEST_F(StagingTest, AThousandFilesOfOneNameAreAllStaged) {
    ShareInit("share");
    const std::vector<std::string> sources(1000, files.writeFile("a.txt", "x"));
    EXPECT_EQ(ShareFiles("share", sources).back(), staged("a_999.txt"));
    EXPECT_EQ(stagedNames().size(), sources.size());
}

TEST_F(StagingTest, WhatCannotBeStagedIsLoggedAndLeavesTheRest) {
    ShareInit("share");
    const std::size_t before = log.lines().size();
    ASSERT_EQ(::mkfifo(files.path("fifo").c_str(), 0600), 0);
    const std::vector<std::string> sources = {files.path("missing"),
                                              files.writeFile("good", "1"),
                                              files.path(),
                                              files.path("fifo"),
                                              "",
                                              "/",
                                              std::string("/etc/hosts\0", 11),
                                              files.writeFile("large", std::string(5000, 'x')),
                                              files.writeFile("last", "2")};
    {
        const FileSizeLimit diskFull(4096);
        EXPECT_THAT(ShareFiles("share", sources), ElementsAre(staged("good"), staged("last")));
        EXPECT_THAT(ShareDatas("share", {std::string(5000, 'x'), "3"}),
                    ElementsAre(staged("image.png")));
    }
    EXPECT_THAT(stagedNames(), UnorderedElementsAre("good", "last", "image.png"));
    const std::vector<std::string> lines = log.lines();
    ASSERT_EQ(lines.size(), before + 8);
    for (std::size_t at = before; at + 1 < lines.size(); ++at) {
        EXPECT_THAT(lines[at], StartsWith("Error writing file shareFiles "));
    }
    EXPECT_THAT(lines.back(), StartsWith("Error writing file shareDatas "));
}

TEST_F(StagingTest, AWordThatNamesNoStagingFolderTouchesNothing) {
    container.writeFile("SharedData/Today/a@x/INBOX.plist", "mail");
    container.writeFile("SharedData/Accounts.plist", "accounts");
    const std::string file = files.writeFile("file", "");
    const auto stageAll = [&](std::string_view service) {
        const std::size_t before = log.lines().size();
        ShareInit(service);
        EXPECT_THAT(ShareFiles(service, {file}), IsEmpty());
        EXPECT_THAT(ShareDatas(service, {"x"}), IsEmpty());
        const auto lines = log.lines();
        EXPECT_THAT(std::vector(lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()),
                    ElementsAre(StartsWith("shareInit \""),
                                StartsWith("Error shareFiles \""),
                                StartsWith("Error shareDatas \"")));
    };
    for (const std::string_view service : {std::string_view(""),
                                           std::string_view("."),
                                           std::string_view(".."),
                                           std::string_view("/"),
                                           std::string_view("a/b"),
                                           std::string_view("../x"),
                                           std::string_view("a\0b", 3),
                                           std::string_view("Today"),
                                           std::string_view("Accounts.plist"),
                                           std::string_view("Contacts")}) {
        SCOPED_TRACE(service);
        stageAll(service);
    }
    EXPECT_THAT(platform::FileManager::contentsOfFolder(container.path()).value(),
                ElementsAre("SharedData"));
    EXPECT_THAT(platform::FileManager::contentsOfFolder(container.path("SharedData")).value(),
                UnorderedElementsAre("Today", "Accounts.plist"));
    EXPECT_EQ(contents(container.path("SharedData/Today/a@x/INBOX.plist")), "mail");
    EXPECT_EQ(contents(container.path("SharedData/Accounts.plist")), "accounts");
}

TEST_F(StagingTest, WithoutAContainerOrALockNothingIsStaged) {
    const std::string file = files.writeFile("file", "");
    const std::pair<const char*, const char*> cases[] = {{"QUILLET_CONTAINER", ""},
                                                         {"XDG_RUNTIME_DIR", file.c_str()}};
    const EnvironmentVariable temporary("TMPDIR", file);
    for (const auto& [name, value] : cases) {
        SCOPED_TRACE(name);
        const EnvironmentVariable variable(name, value);
        const std::size_t before = log.lines().size();
        ShareInit("share");
        EXPECT_THAT(ShareFiles("share", {file}), IsEmpty());
        EXPECT_THAT(ShareDatas("share", {"x"}), IsEmpty());
        EXPECT_EQ(log.lines().size(), before + 3);
    }
    EXPECT_THAT(log.lines(), Each(AllOf(HasSubstr("hare"), testing::Not(HasSubstr("writing")))));
    EXPECT_THAT(platform::FileManager::contentsOfFolder(container.path()).value(), IsEmpty());
}

TEST_F(StagingTest, StagingWaitsForAHostThatReads) {
    ShareInit("share");
    const std::string file = files.writeFile("file", "text");
    const CoordinatingProcess host(container.path("SharedData"), staged("earlier"), Access::Read);
    ASSERT_TRUE(waitUntil([&] { return host.isInside(); }));
    std::atomic<bool> isDone = false;
    std::thread sharing([&] {
        ShareInit("share");
        ShareFiles("share", {file});
        isDone = true;
    });
    EXPECT_TRUE(waitUntil([] { return waitsForLock(::getpid()); }));
    EXPECT_FALSE(isDone);
    EXPECT_THAT(stagedNames(), IsEmpty());
    host.letGo();
    sharing.join();
    EXPECT_THAT(stagedNames(), ElementsAre("file"));
}

}  // namespace
}  // namespace quillet::test
