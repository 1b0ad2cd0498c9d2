#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>

#include "mailhost/host/NewMail.h"
#include "mailhost/host/UndoList.h"
#include "mailhost/maildir/MessageFiles.h"

#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using Texts = std::multiset<std::string>;

Texts filesOf(const std::string& folder) {
    Texts files;
    for (const char* part : {"/cur", "/new", "/tmp"}) {
        if (fs::exists(folder + part)) {
            for (const auto& entry : fs::directory_iterator(folder + part)) {
                files.insert(entry.path());
            }
        }
    }
    return files;
}

Texts contentsOf(const std::string& folder) {
    Texts contents;
    for (const std::string& path : filesOf(folder)) {
        std::ifstream file(path);
        contents.insert({std::istreambuf_iterator<char>(file), {}});
    }
    return contents;
}

Texts basesOf(const Texts& files) {
    Texts bases;
    for (const std::string& path : files) {
        bases.insert(stableBaseOfFile(fs::path(path).filename().string()));
    }
    return bases;
}

// What other programs do with the archived messages.
void renameAll(const std::string& archive, const std::string& end) {
    for (const std::string& path : filesOf(archive)) {
        fs::rename(path, path.substr(0, path.rfind(":2,")) + end);
    }
}

// Archives two messages in a burst and one later, and undoes the first burst.
TEST(UndoTest, ABurstComesBackUnderNewNamesWhateverOthersDidMeanwhile) {
    const test::TemporaryFolder mail;
    const std::string inbox = mail.path("Inbox");
    const std::string archive = mail.path("Archive");
    const struct {
        const char* name;
        std::function<void()> meanwhile;
        seconds later;
        std::string flags;
        Texts back;
        std::size_t failed;
    } rows[] = {
        {"at once", [] {}, seconds(0), "FS", {"1", "2"}, 0},
        {"synced", [&] { renameAll(archive, ",U=7:2,FS"); }, seconds(5), "FS", {"1", "2"}, 0},
        {"flags changed", [&] { renameAll(archive, ":2,R"); }, seconds(5), "R", {"1", "2"}, 0},
        {"at the end", [] {}, seconds(600), "FS", {"1", "2"}, 0},
        {"too late", [] {}, seconds(601), "", {}, 0},
        {"Inbox vanished", [&] { fs::remove_all(inbox); }, seconds(5), "", {}, 2},
        {"Inbox not synced", [&] { mail.writeFile("Archive/.uidvalidity", ""); }, {}, "", {}, 2},
        {"one removed", [&] { fs::remove(*filesOf(archive).begin()); }, {}, "FS", {"2"}, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(inbox);
        fs::remove_all(archive);
        for (const char* part : {"Inbox/cur", "Inbox/new", "Archive/cur", "Archive/new"}) {
            mail.makeFolder(part);
        }
        auto journal = std::move(Journal::open(mail.path("journal")).value());
        Mover mover(journal, [] { return false; });
        UndoList list(mover);
        UndoList::Clock::time_point now(seconds(1000));
        std::vector<UndoList::Burst> bursts;
        Texts usedBases;
        for (const std::string text : {"1", "2", "3"}) {
            const std::string file = "cur/170000000" + text + ".M1P2Q3.host,U=1:2,FS";
            usedBases.merge(basesOf({mail.writeFile("Inbox/" + file, text)}));
            const auto moved = mover.move("", inbox, file, archive);
            ASSERT_TRUE(moved);
            now += seconds(text == "3" ? 3 : 2);
            bursts.push_back(list.add({"a@b", inbox, moved.value()}, now));
        }
        ASSERT_TRUE(bursts[0] == bursts[1] && bursts[1] != bursts[2]);
        row.meanwhile();
        usedBases.merge(basesOf(filesOf(archive)));
        const std::size_t archived = filesOf(archive).size();
        std::size_t pending = 0;
        const auto undo = [&] {
            return list.undo(bursts[0], now - seconds(3) + row.later, [&](const std::string& who) {
                EXPECT_EQ(who, "a@b");
                ++pending;
            });
        };
        const auto undone = undo();
        EXPECT_EQ(contentsOf(inbox), row.back);
        EXPECT_EQ(filesOf(archive).size(), archived - row.back.size());
        EXPECT_EQ(pending, row.back.size() + row.failed);
        EXPECT_EQ(std::count_if(
                      undone.begin(),
                      undone.end(),
                      [](const auto& each) { return each.file && fs::exists(each.file.value()); }),
                  static_cast<std::ptrdiff_t>(row.back.size()));
        for (const std::string& path : filesOf(inbox)) {
            EXPECT_TRUE(path.ends_with(":2," + row.flags)) << path;
            EXPECT_FALSE(usedBases.contains(*basesOf({path}).begin())) << path;
        }
        EXPECT_TRUE(undo().empty());
    }
}

TEST(NewMailTest, OnlyUnreadMessagesThatCameSinceTheStartAreNew) {
    constexpr std::int64_t kNow = 1'700'000'000;
    constexpr std::int64_t kHour = 3600;
    const auto row = [](const char* identifier, std::int64_t hours, bool isUnread = true) {
        return MessageRow{"", identifier, "", "", kNow - hours * kHour, isUnread};
    };
    // As many as are shown, and one more that comes into sight when one of them goes.
    std::vector<MessageRow> full;
    for (std::size_t i = 0; i <= kNewestRows; ++i) {
        full.push_back({"", "full" + std::to_string(i), "", "", kNow - std::int64_t(i), true});
    }
    const std::vector<MessageRow> newest(full.begin(), full.end() - 1);
    const std::vector<MessageRow> risen(full.begin() + 1, full.end());
    const struct {
        const char* name;
        const char* account;
        bool isComplete;
        std::vector<MessageRow> rows;
        std::string found;
    } steps[] = {
        {"first listing", "a", false, {row("a", 1)}, ""},
        {"found late at the start", "a", true, {row("a", 1), row("b", 1)}, ""},
        {"came, also during changes", "a", false, {row("c", 0), row("d", 2), row("a", 1)}, "cd"},
        {"seen before", "a", true, {row("c", 0), row("b", 1)}, ""},
        {"read elsewhere, then unread", "a", true, {row("e", 0, false)}, ""},
        {"unread again", "a", true, {row("e", 0)}, ""},
        {"a day old", "a", true, {row("f", 24)}, ""},
        {"undone", "a", true, {row("u", 0)}, ""},
        {"another account", "b", true, {row("g", 0)}, ""},
        {"came there", "b", true, {row("h", 0)}, "h"},
        {"many at the start", "c", true, newest, ""},
        {"one of them gone", "c", true, risen, ""},
    };
    NewMail mail;
    mail.expect("u", kNow);
    for (const auto& step : steps) {
        SCOPED_TRACE(step.name);
        std::string found;
        const PublishedList list{"INBOX", StandardFolder::Inbox, step.rows};
        const PublishedList todo{"To Do", StandardFolder::ToDo, {row("todo", 0)}};
        const auto messages = mail.read({{step.account, "", {list, todo}}}, step.isComplete, kNow);
        for (const NewMail::Message& message : messages) {
            EXPECT_EQ(message.account, step.account);
            found += message.identifier;
        }
        EXPECT_EQ(found, step.found);
    }
}

}  // namespace
}  // namespace quillet::mailhost
