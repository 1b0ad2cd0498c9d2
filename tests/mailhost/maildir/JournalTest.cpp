#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <utility>

#include "mailhost/maildir/Journal.h"

#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;

TEST(Journal, KeepsWhatItCanRead) {
    const Journal::Move odd{"q%1", "/a\tb/cur/\n%0A\x7F", "/\xFF/cur/\xC3\xA4", ""};
    const Journal::Move late{"q2", "/a/cur/1", "/b/cur/2", "/b/tmp/2"};
    const std::string line = "begin\tq2\t/a/cur/1\t/b/cur/2\t/b/tmp/2\n";
    const struct {
        const char* name;
        std::string bytes;
        std::size_t moves, accounts;
    } rows[] = {
        {"empty", "", 0, 0},
        {"open", line, 1, 0},
        {"closed", line + "end\t/b/cur/2\n", 0, 0},
        {"closed without beginning", "end\t/b/cur/2\n" + line, 1, 0},
        {"twice", line + line, 1, 0},
        {"cut off", line + "begin\tq\t/a/cur/1\t/c", 1, 0},
        {"cut off before the line feed", line.substr(0, line.size() - 1), 0, 0},
        {"end cut off", line + "end\t/b/cur/2", 1, 0},
        {"wrong fields", "begin\tq2\t/a\n\nend\nbegin\npending\n\t\t\n" + line, 1, 0},
        {"wrong escapes", "pending\t%\npending\t%4\npending\t%+1\npending\t%GG\n" + line, 1, 0},
        {"zero bytes", std::string(5000, '\0') + "\npending\ta\n", 0, 1},
        {"accounts", "pending\ta\npending\tb\nran\ta\npending\tb\n", 0, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const test::TemporaryFolder folder;
        const std::string path = folder.writeFile("journal", row.bytes);
        {
            Journal journal = std::move(Journal::open(path).value());
            EXPECT_EQ(journal.openMoves().size(), row.moves);
            EXPECT_EQ(journal.pendingAccounts().size(), row.accounts);
            EXPECT_EQ(fs::file_size(path) == 0, row.moves + row.accounts == 0);
            if (row.moves > 0) {
                EXPECT_EQ(journal.openMoves()[0], late);
            }
            EXPECT_FALSE(journal.begin(odd));
            EXPECT_FALSE(journal.setPending("\xFFnew\n", true));
            const test::FileSizeLimit full(fs::file_size(path) + 10);
            EXPECT_EQ(journal.begin(late).value().code, ENOSPC);
        }
        const Journal again = std::move(Journal::open(path).value());
        ASSERT_EQ(again.openMoves().size(), row.moves + 1);
        EXPECT_EQ(again.openMoves().back(), odd);
        ASSERT_EQ(again.pendingAccounts().size(), row.accounts + 1);
        EXPECT_EQ(again.pendingAccounts().back(), "\xFFnew\n");
        EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    }
}

TEST(Journal, IsOnlyEverARegularFile) {
    const test::TemporaryFolder folder;
    ::mkfifo(folder.path("fifo").c_str(), 0600);
    fs::create_symlink(folder.writeFile("file", ""), folder.path("link"));
    for (const char* name : {"", "fifo", "link", "missing/journal"}) {
        EXPECT_FALSE(Journal::open(folder.path(name))) << name;
    }
}

}  // namespace
}  // namespace quillet::mailhost
