#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillet::platform {

// An installed application, as its desktop entry describes it.
struct Application {
    std::string identifier;            // the name of its entry without ".desktop"
    std::string name;                  // for people
    std::vector<std::string> command;  // the words of "Exec", with their field codes
    bool needsTerminal = false;
};

// The application that the user or the system chose for a type: "x-scheme-handler/mailto",
// "message/rfc822". An application that only takes a more general type, such as an editor for all
// text, is none. Main thread only.
std::optional<Application> applicationFor(const std::string& type);

// The application's command with `words` where it takes files or URLs. One that needs a terminal
// runs in the one that the system chose. Any thread.
std::vector<std::string> commandOf(const Application& application,
                                   const std::vector<std::string>& words);
// The same with a file, which the command takes as a path or as a URL.
std::vector<std::string> commandForFile(const Application& application, const std::string& path);

// The words of a command line as a shell splits them; none if its quotes do not match. No shell
// runs. Any thread.
std::optional<std::vector<std::string>> wordsOfCommand(const std::string& line);

// `command` in a terminal window. Any thread.
std::vector<std::string> inTerminal(const std::vector<std::string>& command);

}  // namespace quillet::platform
