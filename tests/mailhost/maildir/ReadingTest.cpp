#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "mailhost/maildir/FolderReader.h"
#include "mailhost/maildir/MaildirName.h"

#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

constexpr std::int64_t kNow = 1'700'000'000;
constexpr std::int64_t kWeek = 604'800;

// A mail folder whose files have times and dates of our choice.
class MailFolder {
public:
    MailFolder() : MailFolder(std::string()) {}
    // In an empty folder of the caller.
    explicit MailFolder(const std::string& path) : path_(path.empty() ? own_.path() : path) {
        std::filesystem::create_directory(path_ + "/cur");
        std::filesystem::create_directory(path_ + "/new");
    }

    const std::string& path() const { return path_; }
    std::string path(const std::string& file) const { return path_ + "/" + file; }
    // `date`: the text of the field; empty: none.
    void add(const std::string& file, const std::string& date, std::int64_t modified) const {
        const std::string field = date.empty() ? "" : "Date: " + date + "\n";
        std::ofstream(path(file)) << "Subject: " << file << "\n" << field << "\n";
        const timespec times[2] = {{modified, 0}, {modified, 0}};
        ::utimensat(AT_FDCWD, path(file).c_str(), times, 0);
    }
    void rename(const std::string& from, const std::string& to) const {
        std::filesystem::rename(path(from), path(to));
    }

private:
    test::TemporaryFolder own_;
    std::string path_;
};

// Refreshes until the folder is settled.
void settle(FolderReader& reader) {
    do {
        ASSERT_FALSE(reader.refresh());
    } while (reader.isUnsettled());
}

std::vector<std::string> filesOf(FolderReader& reader, RowFilter filter = {}) {
    std::vector<std::string> files;
    for (const MessageRow& row : reader.newest(filter, kNow)) {
        files.push_back(row.file);
    }
    return files;
}

using Files = std::vector<std::string>;

TEST(FolderReader, NewestFirstWithTheFilesTimeInPlaceOfAnImpossibleDate) {
    const MailFolder folder;
    folder.add("cur/1.a:2,S", "Tue, 14 Nov 2023 22:13:19 +0000", 5);  // a second before kNow
    folder.add("new/2.b,U=1:2,", "", kNow - 3);
    folder.add("cur/3.c:2,FS", "nonsense", kNow - 4);
    folder.add("cur/4.d", "Thu, 1 Jan 1960 00:00:00 +0000", kNow - 5);
    folder.add("cur/5.e:2,F", "Fri, 17 Nov 2023 00:00:00 +0000", kNow - 6);  // days ahead
    folder.add("cur/7.g:2,S", "", kNow - 7);
    folder.add("cur/6.f:2,S", "", kNow - 7);
    folder.add("cur/8.deleted:2,ST", "", kNow);
    folder.add("new/9.draft:2,D", "", kNow);
    folder.add("cur/.hidden", "", kNow);
    std::filesystem::create_directory(folder.path("cur/folder"));
    std::filesystem::create_symlink(folder.path("cur/1.a:2,S"), folder.path("cur/link"));
    ::mkfifo(folder.path("cur/fifo").c_str(), 0600);
    folder.add("cur/0.locked:2,S", "Tue, 14 Nov 2023 22:13:19 +0000", kNow - 8);
    ::chmod(folder.path("cur/0.locked:2,S").c_str(), 0);
    const test::OrdinaryPermissions permissions;
    FolderReader reader(folder.path());
    settle(reader);
    const std::vector<MessageRow> rows = reader.newest({}, kNow);
    EXPECT_EQ(filesOf(reader),
              (Files{"cur/1.a:2,S",
                     "new/2.b,U=1:2,",
                     "cur/3.c:2,FS",
                     "cur/4.d",
                     "cur/5.e:2,F",
                     "cur/7.g:2,S",
                     "cur/6.f:2,S",
                     "cur/0.locked:2,S"}));
    EXPECT_EQ(
        rows[1],
        (MessageRow{"new/2.b,U=1:2,", identifierOf("2.b"), "new/2.b,U=1:2,", "", kNow - 3, true}));
    EXPECT_EQ(rows[0].date, kNow - 1);
    EXPECT_EQ(rows[7].subject, "");
    EXPECT_EQ(filesOf(reader, {true, false}), (Files{"cur/3.c:2,FS", "cur/5.e:2,F"}));
    EXPECT_EQ(filesOf(reader, {true, true}), (Files{"cur/5.e:2,F"}));

    ::chmod(folder.path("cur/0.locked:2,S").c_str(), 0600);
    filesOf(reader);
    EXPECT_EQ(filesOf(reader).at(1), "cur/0.locked:2,S");
}

TEST(FolderReader, NewMailIsFoundByNameTimeOrUidOrInTheEndByItsDate) {
    const MailFolder folder;
    const std::string late = "Tue, 14 Nov 2023 22:13:19 +0000";
    for (int i = 1000; i < 2500; ++i) {
        const std::string number = std::to_string(i);
        folder.add(std::string("cur/").append(number).append(".M,U=").append(number) + ":2,S",
                   "Wed, 1 Nov 2023 00:00:00 +0000",
                   kNow - 2 * kWeek + i);
    }
    folder.add("cur/9999.time:2,S", late, 5);
    folder.add("cur/5.uid,U=9999:2,S", late, 5);
    folder.add("cur/4.modified:2,S", late, kNow - 9);
    folder.add("cur/3.date:2,S", late, 5);
    FolderReader reader(folder.path());
    settle(reader);
    Files files = filesOf(reader);
    EXPECT_EQ(files.size(), kNewestRows);
    EXPECT_EQ(Files(files.begin(), files.begin() + 3),
              (Files{"cur/9999.time:2,S", "cur/5.uid,U=9999:2,S", "cur/4.modified:2,S"}));
    while (reader.readAhead(std::chrono::milliseconds(5))) {
    }
    EXPECT_EQ(filesOf(reader)[3], "cur/3.date:2,S");
}

TEST(FolderReader, MessageKeepsItsRowUnderNewNamesAndLeavesAfterTwoSettledListings) {
    const MailFolder folder;
    folder.add("new/1.a", "", 5);
    folder.add("cur/2.b:2,S", "", 4);
    FolderReader reader(folder.path());
    settle(reader);
    EXPECT_EQ(filesOf(reader), (Files{"new/1.a", "cur/2.b:2,S"}));
    folder.rename("new/1.a", "cur/1.a,U=5:2,FS");
    folder.add("new/3.c", "", 6);
    settle(reader);
    const MessageRow renamed = reader.newest({true, false}, kNow).at(0);
    EXPECT_EQ(renamed.file, "cur/1.a,U=5:2,FS");
    EXPECT_EQ(renamed.subject, "new/1.a");
    EXPECT_EQ(renamed.identifier, identifierOf("1.a"));
    EXPECT_EQ(filesOf(reader).size(), 3U);

    // Two names of one message, and one that left.
    std::filesystem::copy(folder.path("cur/2.b:2,S"), folder.path("new/2.b"));
    std::filesystem::remove(folder.path("new/3.c"));
    ASSERT_FALSE(reader.refresh());
    EXPECT_TRUE(reader.isUnsettled());
    EXPECT_EQ(filesOf(reader), (Files{"new/3.c", "cur/1.a,U=5:2,FS", "cur/2.b:2,S"}));
    settle(reader);
    EXPECT_EQ(filesOf(reader), (Files{"cur/1.a,U=5:2,FS", "cur/2.b:2,S"}));
}

TEST(FolderReader, FileIsFoundAgainByIdentifierOrIsGone) {
    const MailFolder folder;
    folder.add("new/1.a", "", 5);
    folder.add("cur/2.b:2,T", "", 4);
    FolderReader reader(folder.path());
    settle(reader);
    reader.newest({}, kNow);
    EXPECT_EQ(reader.fileOf(identifierOf("1.a")), "new/1.a");
    EXPECT_EQ(reader.fileOf(identifierOf("2.b")), "cur/2.b:2,T");
    folder.rename("new/1.a", "cur/1.a:2,S");
    EXPECT_EQ(reader.fileOf(identifierOf("1.a")), "cur/1.a:2,S");
    folder.rename("cur/1.a:2,S", "cur/1.a:2,RS");
    EXPECT_EQ(reader.fileOf(identifierOf("1.a")), "cur/1.a:2,RS");
    std::filesystem::remove(folder.path("cur/1.a:2,RS"));
    folder.add("new/3.c", "", 4);
    EXPECT_EQ(reader.fileOf(identifierOf("1.a")), std::nullopt);
    EXPECT_EQ(reader.fileOf("q"), std::nullopt);
    EXPECT_EQ(reader.fileOf(identifierOf("3.c")), "new/3.c");
}

TEST(FolderReader, FolderWithoutCurIsAnErrorAndWhatWasKnownStays) {
    const MailFolder folder;
    folder.add("cur/1.a", "", 5);
    FolderReader reader(folder.path());
    settle(reader);
    std::filesystem::remove_all(folder.path("new"));
    settle(reader);
    folder.rename("cur", "away");
    EXPECT_TRUE(reader.refresh());
    EXPECT_EQ(reader.newest({}, kNow).size(), 0U);  // never read
    folder.rename("away", "cur");
    settle(reader);
    EXPECT_EQ(filesOf(reader), Files{"cur/1.a"});
    folder.rename("cur", "away");
    EXPECT_TRUE(reader.refresh());
    EXPECT_EQ(filesOf(reader), Files{"cur/1.a"});
}

TEST(FolderReader, NoMessageIsLostWhileAnotherProgramRenamesFiles) {
    constexpr int kFiles = 5000;
    constexpr int kNewest = 40;
    const auto nameOfNewest = [](int i) { return std::to_string(100000 + i) + ".newest"; };
    // On a disk: only there listings miss files that are renamed meanwhile.
    std::string path = std::filesystem::temp_directory_path() / "quillet-test-XXXXXX";
    ASSERT_NE(::mkdtemp(path.data()), nullptr);
    const MailFolder folder(path);
    for (int i = 0; i < kFiles; ++i) {
        folder.add("new/" + std::to_string(i) + ".m", "", 5);
    }
    for (int i = 0; i < kNewest; ++i) {
        folder.add("new/" + nameOfNewest(i), "", 100 + i);
    }
    FolderReader reader(folder.path());
    settle(reader);
    EXPECT_EQ(filesOf(reader).size(), kNewestRows);
    std::atomic<bool> isDone = false;
    std::thread renamer([&] {
        std::vector<std::string> newest(kNewest);
        for (int i = 0; i < kNewest; ++i) {
            newest[i] = "new/" + nameOfNewest(i);
        }
        for (int i = 0; i < kFiles; ++i) {
            folder.rename("new/" + std::to_string(i) + ".m", "cur/" + std::to_string(i) + ".m:2,S");
            const std::string flags = i / kNewest % 2 == 0 ? ":2,S" : ":2,FS";
            const std::string renamed = "cur/" + nameOfNewest(i % kNewest) + flags;
            folder.rename(newest[i % kNewest], renamed);
            newest[i % kNewest] = renamed;
        }
        isDone = true;
    });
    int listings = 0;
    bool isEachThere = true;
    do {
        EXPECT_FALSE(reader.refresh());
        std::set<std::string> seen;
        for (const MessageRow& row : reader.newest({}, kNow)) {
            seen.insert(row.identifier);
        }
        for (int i = 0; i < kNewest; ++i) {
            isEachThere = isEachThere && seen.count(identifierOf(nameOfNewest(i))) == 1;
        }
    } while (!isDone && ++listings < 1000);
    renamer.join();
    EXPECT_TRUE(isEachThere);
    settle(reader);
    EXPECT_EQ(reader.newest({false, true}, kNow).size(), 0U);
    std::filesystem::remove_all(path);
}

}  // namespace
}  // namespace quillet::mailhost
