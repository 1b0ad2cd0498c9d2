#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "mailhost/maildir/Journal.h"
#include "mailhost/maildir/MaildirName.h"
#include "mailhost/maildir/Mover.h"

#include "tests/support/LogCapture.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;

const std::string kFile = "cur/1700000000.M1P2Q3.host,S=5,U=7:2,FS";
const fs::file_time_type kModified{std::chrono::nanoseconds(-123'456'789)};
const std::string kBytes(700'000, 'x');

enum class Where { SameFileSystem, OtherFileSystem };
constexpr Where kSame = Where::SameFileSystem;
constexpr Where kOther = Where::OtherFileSystem;

dev_t deviceOf(const fs::path& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 ? found.st_dev : 0;
}

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Two mail folders and a journal. The target lies on the same file system, or on another one.
class MailFolders {
public:
    explicit MailFolders(Where where)
        : source(below_.path("Inbox")), target(below_.path("Archive")) {
        if (where == kOther && !(other_ = otherFileSystem()).empty()) {
            target = other_ + "/Archive";
        }
        for (const std::string& folder : {source, target}) {
            for (const char* part : {"/cur", "/new", "/tmp"}) {
                fs::create_directories(folder + part);
            }
        }
    }
    ~MailFolders() { fs::remove_all(other_); }
    MailFolders(const MailFolders&) = delete;
    MailFolders& operator=(const MailFolders&) = delete;

    bool areThere(Where where) const { return where == kSame || !other_.empty(); }
    Journal journal() const { return std::move(Journal::open(path("journal")).value()); }
    std::string path(std::string_view below) const { return below_.path(below); }

    void write(const std::string& file, std::string_view bytes = kBytes) const {
        const std::string path = below_.writeFile("Inbox/" + file, bytes);
        fs::last_write_time(path, kModified);
    }

    // The messages of a folder; with those that are on their way.
    static std::vector<fs::path> files(const std::string& folder) {
        std::vector<fs::path> found;
        for (const char* part : {"/cur", "/new", "/tmp"}) {
            for (const auto& entry : fs::directory_iterator(folder + part)) {
                found.push_back(entry.path());
            }
        }
        return found;
    }

private:
    std::string otherFileSystem() const {
        for (const fs::path& place : {fs::temp_directory_path(), fs::current_path()}) {
            std::string folder = place / "quillet-moves-XXXXXX";
            if (deviceOf(place) != deviceOf(source.substr(0, source.rfind('/'))) &&
                ::mkdtemp(folder.data()) != nullptr) {
                return folder;
            }
        }
        return {};
    }

    test::TemporaryFolder below_;
    std::string other_;

public:
    std::string source;
    std::string target;
};

// Lets system calls of this process fail from now on.
void refuseSystemCalls(const std::vector<long>& numbers, int code) {
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0)};
    const auto refuse = SECCOMP_RET_ERRNO | static_cast<unsigned>(code);
    for (const long number : numbers) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, refuse));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        ::_exit(3);
    }
}

enum class Then { Nothing, OthersRename, CopyChanges };

struct Interruption {
    const char* name;
    const char* faultPoint;  // where the process is killed or stopped; empty: nowhere
    Where where;
    Then then;                  // what happens at the stop, or before the recovery
    std::vector<long> refused;  // system calls that fail
    int code;                   // with this error
    std::size_t atSource;       // messages after the recovery
    std::size_t atTarget;
};

constexpr Then kNone = Then::Nothing;
constexpr Then kRename = Then::OthersRename;
constexpr std::string_view kStop = ":stop";

const Interruption kInterruptions[] = {
    {"journal", "journal", kSame, kNone, {}, 0, 1, 0},
    {"rename", "rename", kSame, kNone, {}, 0, 0, 1},
    {"renameThenSync", "rename", kSame, kRename, {}, 0, 0, 1},
    {"sync", "sync", kSame, kNone, {}, 0, 0, 1},
    {"done", "done", kSame, kNone, {}, 0, 0, 1},
    {"nothing", "", kSame, kNone, {}, 0, 0, 1},
    {"onlyLinks", "", kSame, kNone, {SYS_renameat2}, EINVAL, 0, 1},
    {"onlyLinksLink", "link", kSame, kNone, {SYS_renameat2}, ENOSYS, 0, 1},
    {"noWayToMove", "", kSame, kNone, {SYS_renameat2, SYS_linkat}, EINVAL, 1, 0},
    {"renameRefused", "", kSame, kNone, {SYS_renameat2}, EROFS, 1, 0},
    {"journalFull", "", kSame, kNone, {SYS_write}, ENOSPC, 1, 0},
    {"journalNotSynced", "", kSame, kNone, {SYS_fdatasync}, EIO, 1, 0},
    {"renamedBefore", "journal:stop", kSame, kRename, {}, 0, 0, 1},
    {"renamedAfter", "rename:stop", kSame, kRename, {}, 0, 0, 1},
    {"renamedBetween", "link:stop", kSame, kRename, {SYS_renameat2}, EINVAL, 0, 1},
    {"otherJournal", "journal", kOther, kNone, {}, 0, 1, 0},
    {"copy", "copy", kOther, kNone, {}, 0, 1, 0},
    {"copyThenSync", "copy", kOther, kRename, {}, 0, 1, 0},
    {"link", "link", kOther, kNone, {}, 0, 0, 1},
    {"otherOnlyLinksLink", "link", kOther, kNone, {SYS_renameat2}, EINVAL, 0, 1},
    {"linkThenSync", "link", kOther, kRename, {}, 0, 0, 1},
    {"linkThenChange", "link", kOther, Then::CopyChanges, {}, 0, 1, 1},
    {"compare", "compare", kOther, kNone, {}, 0, 0, 1},
    {"unlink", "unlink", kOther, kNone, {}, 0, 0, 1},
    {"otherDone", "done", kOther, kNone, {}, 0, 0, 1},
    {"renamedAfterCopy", "copy:stop", kOther, kRename, {}, 0, 0, 1},
    {"renamedAfterLink", "link:stop", kOther, kRename, {}, 0, 0, 1},
    {"renamedAfterCompare", "compare:stop", kOther, kRename, {}, 0, 0, 1},
    {"changedAfterLink", "link:stop", kOther, Then::CopyChanges, {}, 0, 1, 0},
    {"copyUnreadable", "", kOther, kNone, {SYS_pread64}, EIO, 1, 0},
    {"copyNotSynced", "", kOther, kNone, {SYS_fsync}, ENOSPC, 1, 0},
    {"copyWithoutTime", "", kOther, kNone, {SYS_utimensat}, EPERM, 1, 0},
};

class MoverInterrupted : public testing::TestWithParam<Interruption> {};

// What other programs do with the files: they give them new flags and numbers, or other bytes.
void disturb(const MailFolders& mail, Then then) {
    for (const std::string& folder : {mail.source, mail.target}) {
        for (const fs::path& file : MailFolders::files(folder)) {
            const bool isChanged = then == Then::CopyChanges && folder == mail.target;
            if (isChanged) {
                std::ofstream(file, std::ios::app) << "more";
            } else if (then == Then::OthersRename && file.parent_path().filename() != "tmp") {
                const std::string name = file.filename();
                const std::string base = stableBase(parseMaildirName(name).base);
                fs::rename(file, file.parent_path() / (base + ",U=12:2,RS"));
            }
        }
    }
}

// Disturbs the move where it stops.
int moveInChild(const MailFolders& mail, const Interruption& row) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("QUILLET_FAULT_POINT", row.faultPoint, 1);
        Journal journal = mail.journal();
        refuseSystemCalls(row.refused, row.code);
        ::_exit(Mover(journal, nullptr).move("q", mail.source, kFile, mail.target) ? 0 : 1);
    }
    int status = 0;
    while (::waitpid(child, &status, WUNTRACED) == child && WIFSTOPPED(status)) {
        disturb(mail, row.then);
        ::kill(child, SIGCONT);
    }
    return status;
}

TEST_P(MoverInterrupted, MessageIsThereOnceAndWhole) {
    const Interruption& row = GetParam();
    const MailFolders mail(row.where);
    if (!mail.areThere(row.where)) {
        GTEST_SKIP() << "there is no second file system";
    }
    mail.write(kFile);

    const int status = moveInChild(mail, row);
    const bool isKilled = !std::string_view(row.faultPoint).ends_with(kStop) && *row.faultPoint;
    ASSERT_EQ(WIFSIGNALED(status), isKilled) << status;
    if (isKilled) {
        disturb(mail, row.then);
    } else {
        EXPECT_EQ(WEXITSTATUS(status), row.atSource);
        EXPECT_TRUE(mail.journal().openMoves().empty());
    }
    const test::LogCapture log;
    Journal journal = mail.journal();
    const std::size_t open = journal.openMoves().size();
    Mover(journal, nullptr).recover();
    EXPECT_EQ(log.lines().size(), open);
    EXPECT_TRUE(mail.journal().openMoves().empty());
    const auto atSource = MailFolders::files(mail.source);
    const auto atTarget = MailFolders::files(mail.target);
    ASSERT_EQ(atSource.size(), row.atSource);
    ASSERT_EQ(atTarget.size(), row.atTarget);
    const fs::path file = atSource.empty() ? atTarget[0] : atSource[0];
    EXPECT_TRUE(contents(file) == kBytes);
    EXPECT_TRUE(file.string().ends_with(row.then == Then::OthersRename ? ":2,RS" : ":2,FS"))
        << file;
    EXPECT_EQ(fs::last_write_time(file), kModified);
}

INSTANTIATE_TEST_SUITE_P(All,
                         MoverInterrupted,
                         testing::ValuesIn(kInterruptions),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Mover, OnlyMovesWhatStaysSafe) {
    const std::string hashed = "cur/1700000000.M1P2Q3.host,FMD5=ab,S=5:2,FS";
    const std::string renamed = "Inbox/new/1700000000.M1P2Q3.host,S=5,U=9:2,FS";
    const struct {
        const char* name;
        std::string file;
        std::string before;  // commands for the shell
        int code;            // 0: moved
        std::string text;    // a part of the error
    } rows[] = {
        {"nothing is synchronised", kFile, "true", 0, ""},
        {"renamed before", kFile, "mv Inbox/cur/* " + renamed, 0, ""},
        {"no tmp", kFile, "rmdir Archive/tmp", 0, ""},
        {"only the target is synchronised", kFile, "touch Archive/.uidvalidity", 0, ""},
        {"both", kFile, "touch Inbox/.uidvalidity Archive/.isyncuidmap.db", 0, ""},
        {"only the source", kFile, "touch Inbox/.uidvalidity", EINVAL, "is not synchronised"},
        {"only the source has a map", kFile, "touch Inbox/.isyncuidmap.db", EINVAL, "synchronised"},
        {"only the source has hashes", hashed, "true", EINVAL, "Archive holds no message"},
        {"both have hashes", hashed, "touch Archive/new/1.2.h,U=1,FMD5=ab:2,", 0, ""},
        {"no target", kFile, "rmdir Archive/cur", ENOENT, "Archive/cur is missing"},
        {"target kept from writing", kFile, "chmod 500 Archive/cur", EACCES, "may not be changed"},
        {"source kept from writing", kFile, "chmod 500 Inbox/cur", EACCES, "may not be changed"},
        {"same folder", kFile, "rm -r Archive; ln -s Inbox Archive", EINVAL, "already"},
        {"symbolic link", kFile, "ln -sf /etc/passwd Inbox/cur/*", EINVAL, "was not moved"},
        {"gone", "cur/1.2.h:2,", "true", ENOENT, "is no longer in"},
        {"other place", "cur/../../journal", "true", EINVAL, "not the file of a message"},
    };
    const test::OrdinaryPermissions ordinary;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const MailFolders mail(kSame);
        mail.write(row.file == hashed ? hashed : kFile);
        ASSERT_EQ(std::system(("cd " + mail.path("") + " && " + row.before).c_str()), 0);
        const auto before = MailFolders::files(mail.source);

        Journal journal = mail.journal();
        const auto moved = Mover(journal, nullptr).move("q", mail.source, row.file, mail.target);

        if (row.code != 0) {
            ASSERT_FALSE(moved);
            EXPECT_EQ(moved.error().code, row.code) << moved.error().text;
            EXPECT_NE(moved.error().text.find(row.text), std::string::npos) << moved.error().text;
            EXPECT_EQ(MailFolders::files(mail.source), before);
            continue;
        }
        ASSERT_TRUE(moved) << moved.error().text;
        EXPECT_TRUE(contents(moved.value()) == kBytes);
        EXPECT_TRUE(MailFolders::files(mail.source).empty());
        EXPECT_EQ(fs::path(moved.value()).parent_path(), mail.target + "/cur");
        const std::string name = fs::path(moved.value()).filename();
        EXPECT_TRUE(name.starts_with("1700000000.M"));
        EXPECT_EQ(name.substr(name.find(',')), ",S=5:2,FS");
    }
}

TEST(Mover, CopyThatIsGivenUpLeavesNothingBehind) {
    const MailFolders mail(kOther);
    if (!mail.areThere(kOther)) {
        GTEST_SKIP() << "there is no second file system";
    }
    mail.write(kFile);
    const struct {
        int questions;  // after which the program is to end
        rlim_t limit;   // of files, as if the disk were full
        int code;
    } rows[] = {{2, RLIM_INFINITY, ECANCELED}, {100, 300'000, EFBIG}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        Journal journal = mail.journal();
        const test::FileSizeLimit limit(row.limit);
        int questions = 0;
        Mover mover(journal, [&] { return ++questions == row.questions; });
        const auto moved = mover.move("q", mail.source, kFile, mail.target);
        ASSERT_FALSE(moved);
        EXPECT_EQ(moved.error().code, row.code);
        EXPECT_TRUE(MailFolders::files(mail.target).empty());
        EXPECT_TRUE(contents(mail.source + "/" + kFile) == kBytes);
        EXPECT_TRUE(journal.openMoves().empty());
    }
}

// Another program adds a flag to each message, over and over, while all of them move.
TEST(Mover, NeitherMessagesNorFlagsAreLostWhileAnotherProgramSetsFlags) {
    constexpr std::size_t kMessages = 150;
    const struct {
        Where where;
        std::vector<long> refused;
    } rows[] = {{kSame, {}}, {kSame, {SYS_renameat2}}, {kOther, {}}};
    for (const auto& row : rows) {
        const MailFolders mail(row.where);
        if (!mail.areThere(row.where)) {
            continue;
        }
        std::map<std::string, std::size_t> flags;
        while (flags.size() < kMessages) {
            const std::string base = std::to_string(1'000'000 + flags.size()) + ".M1.host";
            mail.write("cur/" + base + ":2,", base);
            flags[base] = 0;
        }
        const auto bases = flags;
        std::atomic<std::size_t> moved = 0;
        std::atomic<bool> isDone = false;
        std::thread moving([&] {
            refuseSystemCalls(row.refused, EINVAL);  // of this thread
            Journal journal = mail.journal();
            Mover mover(journal, nullptr);
            for (const auto& [base, none] : bases) {
                moved += mover.move("q", mail.source, "cur/" + base + ":2,", mail.target) ? 1 : 0;
            }
            isDone = true;
        });
        while (!isDone) {
            for (auto& [base, count] : flags) {
                const std::string old =
                    mail.source + "/cur/" + base + ":2," + std::string(count, 'a');
                count += count < 99 && ::rename(old.c_str(), (old + "a").c_str()) == 0 ? 1 : 0;
            }
        }
        moving.join();

        EXPECT_EQ(MailFolders::files(mail.target).size(), moved);
        EXPECT_GT(moved, 0U);
        std::map<std::string, std::size_t> left;
        for (const std::string& folder : {mail.source, mail.target}) {
            for (const fs::path& file : MailFolders::files(folder)) {
                const std::string name = file.filename();
                EXPECT_TRUE(
                    left.emplace(contents(file), parseMaildirName(name).flags.size()).second);
            }
        }
        EXPECT_EQ(left, flags);
    }
}

TEST(Mover, RecoveryRemovesNothingThatNoMoverHasMade) {
    const MailFolders mail(kSame);
    const std::string victim = mail.target + "/tmp/victim";
    std::ofstream(victim) << "kept";
    mail.write("cur/1", "same");
    std::ofstream(mail.target + "/cur/2") << "same";
    const std::string source = mail.source + "/cur/1";
    fs::create_directory_symlink(mail.source, mail.path("Same"));
    const Journal::Move moves[] = {
        {"", source, mail.target + "/cur/2", victim},
        {"", source, mail.target + "/cur/2", ""},
        {"", source, victim, victim},
        {"", source, source, ""},
        {"", source, mail.path("Same/cur/1"), ""},
        {"", "", "/", "cur"},
    };
    for (const Journal::Move& move : moves) {
        const test::LogCapture log;
        Journal journal = mail.journal();
        ASSERT_FALSE(journal.begin(move));
        Mover(journal, nullptr).recover();
        EXPECT_TRUE(journal.openMoves().empty());
        EXPECT_EQ(log.lines().size(), 1U);
        EXPECT_TRUE(fs::exists(victim) && fs::exists(source) && fs::exists(mail.target + "/cur/2"));
    }
}

}  // namespace
}  // namespace quillet::mailhost
