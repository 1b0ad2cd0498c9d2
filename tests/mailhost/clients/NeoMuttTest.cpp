// The command line for NeoMutt, given to the real program in a terminal of its own.

#include <csignal>
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "mailhost/clients/ClientCommands.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::mailhost {
namespace {

using ::testing::HasSubstr;

// What the program writes on the terminal until `text` is there.
std::string screenUntil(const std::string& text, Command command, const std::string& folder) {
    std::vector<char*> words;
    for (std::string& word : command) {
        words.push_back(word.data());
    }
    words.push_back(nullptr);
    const winsize size{40, 120, 0, 0};
    int terminal = -1;
    const pid_t process = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (process == 0) {
        ::_exit(::chdir(folder.c_str()) == 0 ? ::execvp(words[0], words.data()) : 1);
    }
    std::string screen;
    pollfd wait{terminal, POLLIN, 0};
    constexpr int kLimit = 20'000;  // milliseconds
    while (screen.find(text) == std::string::npos && ::poll(&wait, 1, kLimit) > 0) {
        std::string bytes(4096, '\0');
        const ssize_t count = ::read(terminal, bytes.data(), bytes.size());
        if (count <= 0) {
            break;
        }
        screen.append(bytes, 0, static_cast<std::size_t>(count));
    }
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    ::close(terminal);
    return screen;
}

class NeoMuttTest : public ::testing::Test {
protected:
    void addMessage(const std::string& name, const std::string& messageId) {
        home_.writeFile("box/cur/" + name + ":2,S",
                        "From: a@x\nSubject: " + name + "\nMessage-ID: <" + messageId +
                            ">\n\nbody of " + name + "\n");
    }
    std::string screenOf(const std::optional<Command>& command, const std::string& text) {
        return command ? screenUntil(text, *command, home_.path()) : "";
    }

    test::TemporaryFolder home_;
    test::EnvironmentVariable homeVariable_{"HOME", home_.path()};
    test::EnvironmentVariable terminal_{"TERM", "xterm"};
    std::string settings_ = home_.writeFile(
        "rc",
        "set folder=" + home_.path() + "\nset spoolfile=" + home_.path("box") +
            "\nset pager_index_lines=0\n"
            "set editor=true autoedit=yes edit_headers=yes\nset abort_unmodified=no\n");
    ClientProgram program_{
        Client::NeoMutt,
        platform::Application{"neomutt", "", {"neomutt", "-n", "-F", settings_, "%u"}}};
};

TEST_F(NeoMuttTest, ShowsTheMessageWhateverItsMessageIdIsMadeOf) {
    home_.makeFolder("box/new");
    home_.makeFolder("box/tmp");
    const std::string hostile = R"(1.2+`touch${IFS}shell`$HOME^A\n(*)[a]|{3}~;#=!%@x.example)";
    addMessage("decoy", "1x2+touch@x.example");
    addMessage("target", hostile);
    addMessage("prefixed", "11.2@x.example");
    addMessage("short", "1.2@x.example");
    for (const auto& [messageId, name] : std::vector<std::pair<std::string, std::string>>{
             {hostile, "target"}, {"1.2@x.example", "short"}}) {
        SCOPED_TRACE(messageId);
        const std::string body = "body of " + name;
        const std::string screen =
            screenOf(showCommand(program_, {"", home_.path("box"), messageId}), body);
        EXPECT_THAT(screen, HasSubstr(body));
    }
    EXPECT_NE(::access(home_.path("shell").c_str(), F_OK), 0) << "the Message-ID ran a shell";
}

TEST_F(NeoMuttTest, ComposesADraftWithItsFiles) {
    Draft draft;
    draft.to = {"ben@example.com"};
    draft.subject = "A report";
    draft.text = "See attached";
    draft.files = {home_.writeFile("-a b.txt", "x")};
    const std::string screen = screenOf(composeCommand(program_, draft), "-a b.txt");
    EXPECT_THAT(screen, HasSubstr("-a b.txt"));
}

}  // namespace
}  // namespace quillet::mailhost
