#include <gmock/gmock.h>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "handoff/Staging.h"
#include "tests/handoff/ContainerFixture.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using namespace std::string_literals;
using ExtensionUtilities::ShareDatas;
using ExtensionUtilities::ShareFiles;
using ExtensionUtilities::ShareInit;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class StagingTest : public ContainerFixture {
protected:
    std::vector<std::string> linesSince(std::size_t before) const {
        const auto lines = log.lines();
        return {lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()};
    }
};

TEST_F(StagingTest, AFolderIsEmptiedAndOneThatWasNotThereIsLogged) {
    ShareInit("share");
    EXPECT_THAT(stagedNames(), IsEmpty());
    files.writeFile("kept", "text");
    container.writeFile("SharedData/share/old/file", "");
    ASSERT_EQ(::symlink(files.path().c_str(), staged("link").c_str()), 0);
    ShareInit("share");
    EXPECT_THAT(stagedNames(), IsEmpty());
    EXPECT_EQ(contents(files.path("kept")), "text");
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("shareInit delete ")));
}

TEST_F(StagingTest, CopiesKeepNamesAndContentsAndNoneReplacesAnother) {
    ShareInit("share");
    const std::pair<const char*, const char*> names[] = {{"1/report.tar.gz", "report.tar.gz"},
                                                         {"2/report.tar.gz", "report.tar_1.gz"},
                                                         {"name \xFF\n", "name \xFF\n"},
                                                         {"image.png", "image.png"},
                                                         {".hidden", ".hidden"}};
    for (const auto& [source, copy] : names) {
        const std::string path = files.writeFile(source, source);
        EXPECT_THAT(ShareFiles("share", {path}), ElementsAre(staged(copy)));
        EXPECT_EQ(contents(staged(copy)), source);
    }
    EXPECT_THAT(ShareDatas("share", {"5", std::string_view("\0", 1), "6"}),
                ElementsAre(staged("image_1.png"), staged("image_2.png"), staged("image_3.png")));
    EXPECT_EQ(contents(staged("image_2.png")), std::string(1, '\0'));
    const std::vector<std::string> many(1000, files.writeFile("a.txt", "x"));
    EXPECT_EQ(ShareFiles("share", many).back(), staged("a_999.txt"));
}

TEST_F(StagingTest, WhatCannotBeStagedIsLoggedAndLeavesTheRest) {
    ShareInit("share");
    ASSERT_EQ(::mkfifo(files.path("fifo").c_str(), 0600), 0);
    const std::string large(5000, 'x');
    const std::string good = files.writeFile("good", "1");
    std::vector<std::string> failing{files.path(), "", "/", good + std::string(1, '\0')};
    failing.push_back(files.path("missing"));
    failing.push_back(files.path("fifo"));
    failing.push_back(files.writeFile("large", large));
    failing.emplace_back("/sys/devices/system/cpu/online");  // shorter than its size claims
    for (const std::string& bad : failing) {
        SCOPED_TRACE(bad);
        const std::size_t before = log.lines().size();
        const FileSizeLimit diskFull(4096);
        EXPECT_EQ(ShareFiles("share", {bad, good}).size(), 1U);
        EXPECT_THAT(linesSince(before), ElementsAre(StartsWith("Error writing file shareFiles ")));
    }
    ShareInit("share");
    const FileSizeLimit diskFull(4096);
    EXPECT_THAT(ShareDatas("share", {large, "3"}), ElementsAre(staged("image.png")));
    EXPECT_THAT(log.lines().back(), StartsWith("Error writing file shareDatas "));
    EXPECT_THAT(stagedNames(), ElementsAre("image.png"));
}

TEST_F(StagingTest, WhatPermissionsForbidIsLoggedAndTheRestIsStaged) {
    ShareInit("share");
    const std::string good = files.writeFile("good", "1");
    const std::string secret = files.writeFile("secret", "2");
    ASSERT_EQ(::chmod(secret.c_str(), 0), 0);
    const std::string dataFolder = container.path("SharedData");
    const OrdinaryPermissions asUser;
    EXPECT_THAT(ShareFiles("share", {secret, good}), ElementsAre(staged("good")));
    ASSERT_EQ(::chmod(staged("").c_str(), 0500), 0);
    EXPECT_THAT(ShareFiles("share", {good}), IsEmpty());
    EXPECT_THAT(ShareDatas("share", {"3"}), IsEmpty());
    ShareInit("share");
    EXPECT_THAT(stagedNames(), ElementsAre("good"));
    ASSERT_EQ(::chmod(dataFolder.c_str(), 0500), 0);
    ShareInit("other");
    EXPECT_THAT(linesSince(1),
                ElementsAre(StartsWith("Error writing file shareFiles " + secret + ": Perm"),
                            StartsWith("Error writing file shareFiles "),
                            StartsWith("Error writing file shareDatas "),
                            StartsWith("shareInit delete "),
                            StartsWith("shareInit delete "),
                            StartsWith("shareInit create ")));
    ASSERT_EQ(::chmod(dataFolder.c_str(), 0700) + ::chmod(staged("").c_str(), 0700), 0);
}

TEST_F(StagingTest, AWordThatNamesNoStagingFolderTouchesNothing) {
    container.writeFile("SharedData/Today/INBOX.plist", "mail");
    container.writeFile("SharedData/Accounts.plist", "");
    const std::string file = files.writeFile("file", "");
    const auto expectRefusal = [&](std::string_view service) {
        SCOPED_TRACE(service);
        const std::size_t before = log.lines().size();
        ShareInit(service);
        EXPECT_THAT(ShareFiles(service, {file}), IsEmpty());
        EXPECT_THAT(ShareDatas(service, {"x"}), IsEmpty());
        EXPECT_THAT(linesSince(before),
                    ElementsAre(StartsWith("shareInit "),
                                StartsWith("Error shareFiles "),
                                StartsWith("Error shareDatas ")));
    };
    std::istringstream words("|.|..|/|a/b|Today|Accounts.plist|Contacts|a\0b"s);
    for (std::string service; std::getline(words, service, '|');) {
        expectRefusal(service);
    }
    {
        const EnvironmentVariable noContainer("QUILLET_CONTAINER", "");
        expectRefusal("share");
    }
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    expectRefusal("share");
    EXPECT_THAT(platform::FileManager::contentsOfFolder(container.path("SharedData")).value(),
                UnorderedElementsAre("Today", "Accounts.plist"));
    EXPECT_EQ(contents(container.path("SharedData/Today/INBOX.plist")), "mail");
}

TEST_F(StagingTest, StagingWaitsForAHostThatReads) {
    ShareInit("share");
    const std::string file = files.writeFile("file", "text");
    const CoordinatingProcess host(container.path("SharedData"), staged("earlier"), Access::Read);
    ASSERT_TRUE(waitUntil([&] { return host.isInside(); }));
    std::thread sharing([&] { ShareFiles("share", {file}); });
    EXPECT_TRUE(waitUntil([] { return waitsForLock(::getpid()); }));
    EXPECT_THAT(stagedNames(), IsEmpty());
    host.letGo();
    sharing.join();
    EXPECT_THAT(stagedNames(), ElementsAre("file"));
}

}  // namespace
}  // namespace quillet::test
