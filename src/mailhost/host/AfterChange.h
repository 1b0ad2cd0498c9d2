#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillet::mailhost {

// Runs the commands that accounts ask for after changes, such as a sync: without a shell, five
// seconds after the last change of the account, and one at a time for each account. A command that
// still runs when the program ends goes on. Main thread only.
class AfterChange {
public:
    // `commandOf` answers with the words of an account's command, empty if it has none. `finished`
    // is called when no command is due any more, whether or not it succeeded. `failed` says why a
    // command failed, which is also logged. All are called from the event loop.
    AfterChange(std::function<std::vector<std::string>(const std::string& account)> commandOf,
                std::function<void(const std::string& account)> finished,
                std::function<void(const std::string& account, const std::string& failure)> failed);
    ~AfterChange();

    void changed(const std::string& account);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::mailhost
