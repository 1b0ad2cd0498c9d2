#include "bench/StoreMaker.h"

#include <array>
#include <chrono>
#include <random>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "bench/store/StoreWriter.h"
#include "platform/files/FileManager.h"

namespace quillet::bench {

namespace {

using test::Array;
using test::Dictionary;

constexpr std::int64_t kOldest = std::int64_t{60} * 24 * 3600;  // seconds
constexpr unsigned kSeed = 20251114;

constexpr std::string_view kFirstNames[] = {
    "Anna", "Björn", "Chloé", "Dmitri", "Elif", "Fatima", "Giulia", "Hanna", "Igor", "Jürgen"};
constexpr std::string_view kLastNames[] = {"Berg",
                                           "Čapek",
                                           "Dubois",
                                           "Eriksen",
                                           "Fischer",
                                           "García",
                                           "Hoffmann",
                                           "Ito",
                                           "Jansen",
                                           "Kowalski"};
constexpr std::string_view kWords[] = {
    "meeting", "notes",   "invoice",  "Friday",   "draft",  "budget", "R&D",      "offer",
    "travel",  "Zürich",  "contract", "review",   "team",   "lunch",  "reminder", "schedule",
    "report",  "quarter", "photos",   "delivery", "update", "agenda", "question", "release"};
struct Folder {
    std::string_view name;
    int standardId;
};
constexpr Folder kFolders[] = {{"INBOX", 1}, {"INBOX/To Do", 11}, {"INBOX/Memo", 12}};

class MessageMaker {
public:
    explicit MessageMaker(std::int64_t now) : now_(now), random_(kSeed) {}

    Dictionary make(std::size_t account, const std::string& mail) {
        const Folder& folder = kFolders[below(std::size(kFolders))];
        ++made_;
        return {
            {"idx", made_},
            {"acc_idx", account + 1},
            {"icon_fetch", below(3)},
            {"flip", below(2)},
            {"subject", subject()},
            {"messageId",
             "<" + std::to_string(random_()) + "." + std::to_string(made_) + ".7F3A2" +
                 std::to_string(random_()) + "@mail-" + std::to_string(below(100)) +
                 ".example.com>"},
            {"from", sender()},
            {"account", mail},
            {"folder", folder.name},
            {"folderStid", folder.standardId},
            {"isUnread", below(4) == 0 ? 1 : 0},
            {"date", now_ - static_cast<std::int64_t>(random_() % kOldest)},
        };
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    std::string subject() {
        std::string text = below(3) == 0 ? "Re: " : "";
        for (std::size_t words = below(8) + 3; words > 0; --words) {
            text += kWords[below(std::size(kWords))];
            text += words > 1 ? " " : "";
        }
        return text;
    }

    std::string sender() {
        const std::string first(kFirstNames[below(std::size(kFirstNames))]);
        const std::string last(kLastNames[below(std::size(kLastNames))]);
        return first + " " + last + " <contact" + std::to_string(below(1000)) + "@example.org>";
    }

    std::int64_t now_;
    std::mt19937 random_;
    std::size_t made_ = 0;
};

std::string mailOf(std::size_t account) {
    return "account" + std::to_string(account + 1) + "@quillet.example";
}

void write(const std::string& dataFolder, const test::StoreFile& file) {
    if (const auto failure = test::writeStore(dataFolder, {&file, 1})) {
        throw std::runtime_error(failure->description());
    }
}

}  // namespace

void makeStore(const std::string& container, const StoreSize& size) {
    using Clock = std::chrono::system_clock;
    const auto now =
        std::chrono::duration_cast<std::chrono::seconds>(Clock::now().time_since_epoch()).count();
    const std::string dataFolder = test::dataFolder(container);
    MessageMaker messages(now);
    Array accounts;
    for (std::size_t account = 0; account < size.accounts; ++account) {
        const std::string mail = mailOf(account);
        accounts.emplace_back(Dictionary{{"mail", mail}, {"name", mail}, {"enabled", true}});
        for (std::size_t file = 0; file < size.filesPerAccount; ++file) {
            Array data;
            for (std::size_t message = 0; message < size.messagesPerFile; ++message) {
                data.emplace_back(messages.make(account, mail));
            }
            write(dataFolder,
                  {"Today/" + mail + "/folder" + std::to_string(file) + ".plist",
                   Dictionary{{"account", mail}, {"folder", "INBOX"}, {"data", std::move(data)}},
                   size.format});
        }
    }
    platform::FileManager::createFolder(dataFolder + "/Today");  // there even when it is empty
    write(dataFolder, {"Accounts.plist", std::move(accounts), size.format});
}

}  // namespace quillet::bench
