#include "mailhost/accounts/MsmtpConfiguration.h"

#include <algorithm>
#include <map>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

using platform::trimmed;

constexpr std::string_view kSpaces = " \t\r";

class MsmtpReader {
public:
    void readLine(std::string_view line) {
        line = trimmed(line, kSpaces);
        const std::size_t end = std::min(line.find_first_of(kSpaces), line.size());
        const std::string_view command = line.substr(0, end);
        const std::string_view argument = trimmed(trimmed(line.substr(end), kSpaces), "\"");
        if (command == "defaults") {
            sender_ = &defaults_;
        } else if (command == "account") {
            beginAccount(argument);
        } else if (command == "from" && sender_ != nullptr) {
            *sender_ = argument;
        }
    }

    std::string sender() const {
        const auto account = senders_.find("default");
        if (account != senders_.end()) {
            return account->second;
        }
        return senders_.size() == 1 ? senders_.begin()->second : std::string();
    }

private:
    // "NAME" or "NAME : BASE, BASE": the account begins with the settings of the others.
    void beginAccount(std::string_view argument) {
        const std::size_t colon = std::min(argument.find(':'), argument.size());
        const std::string name(trimmed(argument.substr(0, colon), kSpaces));
        std::string sender = defaults_;
        argument.remove_prefix(std::min(colon + 1, argument.size()));
        while (!argument.empty()) {
            const std::size_t comma = std::min(argument.find(','), argument.size());
            const auto base =
                senders_.find(std::string(trimmed(argument.substr(0, comma), kSpaces)));
            sender = base != senders_.end() ? base->second : sender;
            argument.remove_prefix(std::min(comma + 1, argument.size()));
        }
        sender_ = &(senders_[name] = sender);
    }

    std::string defaults_;
    std::map<std::string, std::string> senders_;
    std::string* sender_ = nullptr;  // of the section
};

}  // namespace

std::string readMsmtpSender(std::string_view text) {
    MsmtpReader reader;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        reader.readLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return reader.sender();
}

}  // namespace quillet::mailhost
