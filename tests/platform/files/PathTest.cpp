#include <gtest/gtest.h>

#include "platform/files/Path.h"

namespace quillet::test {

namespace Path = platform::Path;

TEST(Path, LastComponentExtensionAndRestAreTakenApart) {
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
        SCOPED_TRACE(path);
        EXPECT_EQ(Path::lastPathComponent(path), last);
        EXPECT_EQ(Path::pathExtension(path), extension);
        EXPECT_EQ(Path::deletingPathExtension(path), rest);
    }
}

TEST(Path, ExactlyOneSlashIsBetweenThePartsOfAJoinedPath) {
    EXPECT_EQ(Path::appendingPathComponent("/a//", "//b/c/"), "/a/b/c");
    EXPECT_EQ(Path::appendingPathComponent("/", "b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("", "/b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("/a/", ""), "/a");
    EXPECT_EQ(Path::appendingPathExtension("/a/Accounts/", "plist"), "/a/Accounts.plist");
}

}  // namespace quillet::test
