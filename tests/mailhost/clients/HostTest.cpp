// The mail host follows commands that show something. It is the real program in a process of its
// own.

#include <filesystem>
#include <gtest/gtest.h>

#include "mailhost/maildir/MaildirName.h"

#include "tests/support/OwnContainer.h"
#include "tests/support/ProgramRun.h"

namespace quillet::mailhost {
namespace {

TEST(MailHostTest, ShowsMessagesInTheConfiguredProgramAndSavesDraftsThatNobodyTakes) {
    const test::OwnContainer own;
    const test::TemporaryFolder home;
    const test::EnvironmentVariable homeVariable("HOME", home.path());
    const test::EnvironmentVariable config("XDG_CONFIG_HOME", std::nullopt);
    const test::EnvironmentVariable data("XDG_DATA_HOME", std::nullopt);
    const test::EnvironmentVariable cache("XDG_CACHE_HOME", std::nullopt);
    const test::EnvironmentVariable state("XDG_STATE_HOME", home.path("state"));
    home.writeFile(".config/quillet/mail-host.conf",
                   "[general]\nopen = cp {file} " + home.path("seen") +
                       "\n[account anna@x]\nmaildir = ~/Mail\n");
    home.makeFolder("Mail/.Drafts/cur");
    home.writeFile("Mail/cur/17.M1.h:2,S", "Message-ID: <1@x>\n\n");
    const std::string staged = own.container.writeFile("SharedData/Share-1/f.txt", "x");
    QProcess host;
    test::startProgram(host, "quillet-mail-host", {"--container", own.container.path(), "--log"});
    std::string log;
    const auto logHas = [&](const std::string& text) {
        log += host.readAllStandardOutput().toStdString();
        return log.find(text) != std::string::npos;
    };
    ASSERT_TRUE(test::waitUntil([&] { return logHas("INBOX.plist"); }, test::kProgramTime));
    const std::string place =
        "?mail=anna%40x&messageid=" + identifierOf("17.M1.h") + "&folderstandardid=1";
    struct CommandRow {
        std::string url;
        std::string log;
    };
    const CommandRow rows[] = {
        {"quillet://open" + place, R"("outcome":"shown","client":"cp")"},
        {"quillet://reply" + place, R"("command":"reply",)"},
        {"quillet://compose?subject=s&attachment_0=" + staged, R"("outcome":"stored","target":")"},
        {"quillet://send?subject=%FF", R"("outcome":"failed")"},
    };
    for (const CommandRow& row : rows) {
        SCOPED_TRACE(row.url);
        const test::Outcome sent =
            test::runProgram("quillet-mail-host", {"--container", own.container.path(), row.url});
        EXPECT_EQ(sent.status, 0) << sent.errors;
        EXPECT_TRUE(test::waitUntil([&] { return logHas(row.log); }, test::kProgramTime)) << log;
    }
    EXPECT_TRUE(std::filesystem::exists(home.path("seen")));
    EXPECT_FALSE(std::filesystem::is_empty(home.path("Mail/.Drafts/cur")));
    host.terminate();
    EXPECT_TRUE(host.waitForFinished());
}

}  // namespace
}  // namespace quillet::mailhost
