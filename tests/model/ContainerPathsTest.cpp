#include <gtest/gtest.h>

#include "model/ExtensionUtilities.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

TEST(ContainerPaths, DataFolderFollowsTheBundleIdentifier) {
    struct Case {
        std::optional<std::string> identifier;
        const char* folder;
    };
    const Case cases[] = {
        {std::nullopt, "SharedData"},
        {"", "SharedData"},
        {"it.tarno.quillet2", "SharedData"},
        {"it.tarno.quillet.beta11", "SharedDataBeta"},
        {"it.tarno.quillet.beta8.today", "SharedDataBeta"},
        {"IT.TARNO.QUILLET.BETA", "SharedData"},
    };
    const EnvironmentVariable container("QUILLET_CONTAINER", "/tmp/box");
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.identifier.value_or("none"));
        const EnvironmentVariable identifier("QUILLET_BUNDLE_IDENTIFIER", testCase.identifier);
        EXPECT_EQ(ExtensionUtilities::GroupFolderName(), testCase.folder);
        EXPECT_EQ(ExtensionUtilities::GroupDataPath(), std::string("/tmp/box/") + testCase.folder);
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
    struct Case {
        const char* name;
        const char* free;
    };
    const Case cases[] = {
        {"new.png", "new.png"},
        {"photo.png", "photo_2.png"},
        {"photo_1.png", "photo_1_1.png"},
        {"notes", "notes_1"},
        {"report.tar.gz", "report.tar_1.gz"},
        {".profile", ".profile_1"},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(RequestUtils::GetGoodPath(testCase.name, folder.path()),
                  folder.path(testCase.free));
    }
    EXPECT_EQ(RequestUtils::GetGoodPath(std::nullopt, folder.path()), std::nullopt);
    EXPECT_EQ(RequestUtils::GetGoodPath("a", std::nullopt), std::nullopt);
}

}  // namespace quillet::test
