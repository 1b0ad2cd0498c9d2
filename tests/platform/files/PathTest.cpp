#include <gtest/gtest.h>

#include "platform/files/Path.h"

namespace quillet::test {
namespace {

namespace Path = platform::Path;

TEST(Path, LastComponentExtensionAndRestAreTakenApart) {
    const struct {
        const char* path;
        const char* last;
        const char* extension;
        const char* withoutExtension;
    } cases[] = {
        {"/a/photo.png", "photo.png", "png", "/a/photo"},
        {"report.tar.gz", "report.tar.gz", "gz", "report.tar"},
        {"/a.b/notes", "notes", "", "/a.b/notes"},
        {"/a/.profile", ".profile", "", "/a/.profile"},
        {"/a/name.", "name.", "", "/a/name."},
        {"/a/folder.d//", "folder.d", "d", "/a/folder"},
        {"/", "/", "", "/"},
        {"", "", "", ""},
        {"/a/\xFF.\xFE", "\xFF.\xFE", "\xFE", "/a/\xFF"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(Path::lastPathComponent(row.path), row.last);
        EXPECT_EQ(Path::pathExtension(row.path), row.extension);
        EXPECT_EQ(Path::deletingPathExtension(row.path), row.withoutExtension);
    }
}

TEST(Path, ExactlyOneSlashStandsBetweenThePartsOfAJoinedPath) {
    EXPECT_EQ(Path::appendingPathComponent("/a//", "//b/c/"), "/a/b/c");
    EXPECT_EQ(Path::appendingPathComponent("/", "b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("", "/b"), "/b");
    EXPECT_EQ(Path::appendingPathComponent("/a/", ""), "/a");
    EXPECT_EQ(Path::appendingPathExtension("/a/Accounts/", "plist"), "/a/Accounts.plist");
}

}  // namespace
}  // namespace quillet::test
