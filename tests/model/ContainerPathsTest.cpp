#include <gmock/gmock.h>
#include <sys/stat.h>

#include "model/ExtensionUtilities.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

using ::testing::IsEmpty;
using ::testing::Optional;
using ::testing::UnorderedElementsAre;

TEST(ContainerPaths, DataFolderFollowsTheBundleIdentifier) {
    const std::pair<std::optional<std::string>, const char*> cases[] = {
        {std::nullopt, "SharedData"},
        {"it.tarno.quillet2", "SharedData"},
        {"it.tarno.quillet.beta11", "SharedDataBeta"},
        {"it.tarno.quillet.beta8.today", "SharedDataBeta"},
        {"IT.TARNO.QUILLET.BETA", "SharedData"},
    };
    const EnvironmentVariable container("QUILLET_CONTAINER", std::nullopt);
    const EnvironmentVariable data("XDG_DATA_HOME", "/data");
    for (const auto& [own, folder] : cases) {
        const EnvironmentVariable identifier("QUILLET_BUNDLE_IDENTIFIER", own);
        EXPECT_EQ(ExtensionUtilities::GroupDataPath(),
                  std::string("/data/group-containers/Q7K2M9X4TB.quillet/") + folder);
    }
    const EnvironmentVariable empty("QUILLET_CONTAINER", "");
    EXPECT_EQ(ExtensionUtilities::GroupDataPath(), std::nullopt);
}

TEST(GetGoodPath, FreeNameGetsTheFirstUnusedNumber) {
    const TemporaryFolder folder;
    for (const char* name : {"photo.png", "photo_1.png", "report.tar.gz", ".profile"}) {
        folder.writeFile(name, "");
    }
    folder.makeFolder("notes");
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
    const std::string file = folder.writeFile("a.plist", "");
    const std::string other = folder.writeFile("b.plist", "");
    folder.writeFile(".DS_Store", "");
    EXPECT_THAT(ExtensionUtilities::directoryContent(folder.path()),
                Optional(UnorderedElementsAre(file, other)));
    EXPECT_THAT(ExtensionUtilities::directoryContent(folder.path("missing")), Optional(IsEmpty()));
    EXPECT_THAT(ExtensionUtilities::directoryContent(file), Optional(IsEmpty()));
    ::chmod(folder.path().c_str(), 0100);
    const OrdinaryPermissions ordinary;
    EXPECT_EQ(ExtensionUtilities::directoryContent(folder.path()), std::nullopt);
    ::chmod(folder.path().c_str(), 0700);
}

}  // namespace quillet::test
