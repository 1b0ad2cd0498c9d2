#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "model/ExtensionUtilities.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

TEST(ContainerPaths, DataFolderFollowsTheBundleIdentifier) {
    const std::pair<std::optional<std::string>, const char*> cases[] = {
        {std::nullopt, "SharedData"},
        {"it.tarno.quillet2", "SharedData"},
        {"it.tarno.quillet.beta11", "SharedDataBeta"},
        {"it.tarno.quillet.beta8.today", "SharedDataBeta"},
        {"IT.TARNO.QUILLET.BETA", "SharedData"},
    };
    const EnvironmentVariable container("QUILLET_CONTAINER", "/tmp/box");
    for (const auto& [own, folder] : cases) {
        const EnvironmentVariable identifier("QUILLET_BUNDLE_IDENTIFIER", own);
        EXPECT_EQ(ExtensionUtilities::GroupDataPath(), std::string("/tmp/box/") + folder);
    }
}

TEST(ContainerPaths, ContainerLiesInTheUsersDataFolderUnlessToldOtherwise) {
    const EnvironmentVariable unset("QUILLET_CONTAINER", std::nullopt);
    const EnvironmentVariable data("XDG_DATA_HOME", "/data");
    EXPECT_EQ(ExtensionUtilities::GroupPath(), "/data/group-containers/Q7K2M9X4TB.quillet");
    const EnvironmentVariable empty("QUILLET_CONTAINER", "");
    EXPECT_EQ(ExtensionUtilities::GroupPath(), std::nullopt);
    EXPECT_EQ(ExtensionUtilities::GroupDataPath(), std::nullopt);
}

TEST(GetGoodPath, FreeNameGetsTheFirstUnusedNumber) {
    const TemporaryFolder folder;
    folder.writeFile("photo.png", "");
    folder.writeFile("photo_1.png", "");
    folder.makeFolder("notes");
    folder.writeFile("report.tar.gz", "");
    folder.writeFile(".profile", "");
    const std::pair<const char*, const char*> cases[] = {
        {"new.png", "new.png"},
        {"photo.png", "photo_2.png"},
        {"photo_1.png", "photo_1_1.png"},
        {"notes", "notes_1"},
        {"report.tar.gz", "report.tar_1.gz"},
        {".profile", ".profile_1"},
    };
    for (const auto& [name, free] : cases) {
        EXPECT_EQ(RequestUtils::GetGoodPath(name, folder.path()), folder.path(free));
    }
    EXPECT_EQ(RequestUtils::GetGoodPath(std::nullopt, folder.path()), std::nullopt);
    EXPECT_EQ(RequestUtils::GetGoodPath("a", std::nullopt), std::nullopt);
}

TEST(DirectoryContent, TellsAMissingFolderFromAnUnreadableOne) {
    const TemporaryFolder folder;
    for (const char* name : {".DS_Store", "a.plist", "b.plist"}) {
        folder.writeFile(name, "");
    }
    const auto content = [&](const std::string& name) {
        return ExtensionUtilities::directoryContent(folder.path() + name);
    };
    EXPECT_THAT(content(""),
                ::testing::Optional(::testing::UnorderedElementsAre(folder.path("a.plist"),
                                                                    folder.path("b.plist"))));
    EXPECT_THAT(content("/missing"), ::testing::Optional(::testing::IsEmpty()));
    EXPECT_THAT(content("/a.plist"), ::testing::Optional(::testing::IsEmpty()));
    if (geteuid() != 0) {  // root reads everything
        std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_exec);
        EXPECT_EQ(content(""), std::nullopt);
        std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all);
    }
}

}  // namespace quillet::test
