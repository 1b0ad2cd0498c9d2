#include <algorithm>
#include <array>
#include <glib.h>
#include <optional>
#include <unordered_set>
#include <utility>

#include "mailhost/accounts/AccountAddress.h"
#include "mailhost/accounts/Configuration.h"
#include "mailhost/accounts/ConfigurationValue.h"
#include "mailhost/accounts/FolderLayout.h"
#include "mailhost/accounts/HomePath.h"

#include "platform/base/Ascii.h"
#include "platform/base/Utf8.h"

namespace quillet::mailhost {

namespace {

using platform::equalsIgnoringAsciiCase;
using platform::trimmed;

constexpr std::size_t kLongestText = 1 << 20;

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), platform::asciiLowerCase);
    return lower;
}

// A foreign text in a sentence.
std::string inQuotes(std::string_view text) {
    constexpr std::size_t kLongestShown = 60;
    if (text.size() <= kLongestShown) {
        return "\"" + std::string(text) + "\"";
    }
    std::size_t end = kLongestShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return "\"" + std::string(text.substr(0, end)) + "…\"";
}

// The words of a command line, by the shell's rules for quotes. None if they are broken.
std::optional<std::vector<std::string>> wordsOf(const std::string& command) {
    int count = 0;
    char** words = nullptr;
    if (g_shell_parse_argv(command.c_str(), &count, &words, nullptr) == 0) {
        return std::nullopt;
    }
    std::vector<std::string> result(words, words + count);
    g_strfreev(words);
    return result;
}

class ConfigurationReader {
public:
    explicit ConfigurationReader(const UserFolders& folders) : folders_(folders) {}

    void readLine(std::string_view line);
    std::variant<Configuration, std::vector<ConfigurationProblem>> finish();

private:
    enum class Section { None, General, Account, Unknown };
    struct Key {
        std::string_view name;
        Section section;
        void (ConfigurationReader::*read)(std::string_view value);
    };
    static const std::array<Key, 13> kKeys;

    void addProblem(std::string text) { problems_.push_back({line_, std::move(text)}); }
    void beginSection(std::string_view line);
    void beginAccount(std::string_view address);
    void endSection();
    void readSetting(std::string_view line);
    std::optional<std::string> singleValue(std::string_view value);

    void readOpen(std::string_view value);
    template <bool Configuration::*Member>
    void readFlag(std::string_view value);
    void readName(std::string_view value);
    void readMaildir(std::string_view value);
    void readLayout(std::string_view value);
    template <std::vector<std::string> AccountConfiguration::*Member>
    void readFolders(std::string_view value);
    void readTodo(std::string_view value);
    void addFolder(std::string_view name, std::vector<std::string>& names);
    void readShow(std::string_view value);
    void readAfterChange(std::string_view value);

    const UserFolders& folders_;
    Configuration configuration_;
    std::vector<ConfigurationProblem> problems_;
    std::size_t line_ = 0;
    Section section_ = Section::None;
    std::size_t sectionLine_ = 0;
    bool hasGeneral_ = false;
    std::string_view key_;                      // of the line that is read
    std::unordered_set<std::string> keys_;      // of the section
    std::unordered_set<std::string> accounts_;  // addresses in lower case
    AccountConfiguration account_;
};

const std::array<ConfigurationReader::Key, 13> ConfigurationReader::kKeys{{
    {"open", Section::General, &ConfigurationReader::readOpen},
    {"notices", Section::General, &ConfigurationReader::readFlag<&Configuration::notices>},
    {"notify", Section::General, &ConfigurationReader::readFlag<&Configuration::notify>},
    {"name", Section::Account, &ConfigurationReader::readName},
    {"maildir", Section::Account, &ConfigurationReader::readMaildir},
    {"layout", Section::Account, &ConfigurationReader::readLayout},
    {"inbox", Section::Account, &ConfigurationReader::readFolders<&AccountConfiguration::inbox>},
    {"archive",
     Section::Account,
     &ConfigurationReader::readFolders<&AccountConfiguration::archive>},
    {"trash", Section::Account, &ConfigurationReader::readFolders<&AccountConfiguration::trash>},
    {"todo", Section::Account, &ConfigurationReader::readTodo},
    {"memo", Section::Account, &ConfigurationReader::readFolders<&AccountConfiguration::memo>},
    {"show", Section::Account, &ConfigurationReader::readShow},
    {"after-change", Section::Account, &ConfigurationReader::readAfterChange},
}};

void ConfigurationReader::readLine(std::string_view line) {
    ++line_;
    line = trimmed(line, kConfigurationBlanks);
    const bool isSection = line.starts_with('[');
    if (line.empty() || line.starts_with('#')) {
        return;
    }
    if (line.find('\0') != std::string_view::npos || platform::firstInvalidUtf8(line)) {
        addProblem("the line is not text in UTF-8");
        section_ = isSection ? Section::Unknown : section_;
        return;
    }
    if (isSection) {
        beginSection(line);
    } else {
        readSetting(line);
    }
}

std::variant<Configuration, std::vector<ConfigurationProblem>> ConfigurationReader::finish() {
    endSection();
    if (problems_.empty()) {
        return std::move(configuration_);
    }
    // A missing key is found at the end of its section.
    std::stable_sort(problems_.begin(), problems_.end(), [](const auto& one, const auto& other) {
        return one.line < other.line;
    });
    return std::move(problems_);
}

void ConfigurationReader::beginSection(std::string_view line) {
    endSection();
    section_ = Section::Unknown;
    sectionLine_ = line_;
    keys_.clear();
    const ConfigurationItems title = readConfigurationValue(line);
    line = title.items.front().text;
    if (!line.ends_with(']')) {
        addProblem("the closing ] of the section is missing");
        return;
    }
    line = trimmed(line.substr(1, line.size() - 2), kConfigurationBlanks);
    const std::size_t end = std::min(line.find_first_of(kConfigurationBlanks), line.size());
    const std::string_view rest = platform::trimmedStart(line.substr(end), kConfigurationBlanks);
    if (equalsIgnoringAsciiCase(line.substr(0, end), "account")) {
        beginAccount(rest);
    } else if (!equalsIgnoringAsciiCase(line, "general")) {
        addProblem("the section " + inQuotes(line) +
                   " is unknown; there are [general] and [account ADDRESS]");
    } else if (std::exchange(hasGeneral_, true)) {
        addProblem("[general] is given twice");
    } else {
        section_ = Section::General;
    }
}

void ConfigurationReader::beginAccount(std::string_view address) {
    account_ = AccountConfiguration();
    account_.address = address;
    section_ = Section::Account;
    if (!isAccountAddress(address)) {
        addProblem(address.empty() ? "the mail address is missing; write [account YOU@EXAMPLE.COM]"
                                   : inQuotes(address) + " is not a mail address");
    } else if (!accounts_.insert(lowerCase(address)).second) {
        addProblem("the account " + inQuotes(address) + " is given twice");
    }
}

void ConfigurationReader::endSection() {
    if (section_ != Section::Account) {
        return;
    }
    if (!keys_.contains("maildir")) {
        problems_.push_back(
            {sectionLine_, "the account " + inQuotes(account_.address) + " has no maildir"});
    }
    configuration_.accounts.push_back(std::move(account_));
}

void ConfigurationReader::readSetting(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        addProblem(inQuotes(line) + " is neither a section nor KEY = VALUE");
        return;
    }
    if (section_ == Section::Unknown) {
        return;  // its problem is the section's
    }
    const std::string name = lowerCase(trimmed(line.substr(0, equals), kConfigurationBlanks));
    const auto* const key =
        std::find_if(kKeys.begin(), kKeys.end(), [&](const Key& one) { return one.name == name; });
    if (section_ == Section::None) {
        addProblem(inQuotes(name) + " stands before the first section");
    } else if (key == kKeys.end()) {
        addProblem("the key " + inQuotes(name) + " is unknown");
    } else if (key->section != section_) {
        addProblem(name + (section_ == Section::General ? " belongs into [account ADDRESS]"
                                                        : " belongs into [general]"));
    } else if (!keys_.insert(name).second) {
        addProblem(name + " is given twice");
    } else {
        key_ = key->name;
        (this->*key->read)(line.substr(equals + 1));
    }
}

std::optional<std::string> ConfigurationReader::singleValue(std::string_view value) {
    ConfigurationItems read = readConfigurationValue(value);
    if (!read.problem.empty()) {
        addProblem(std::string(key_) + ": " + read.problem);
        return std::nullopt;
    }
    return std::move(read.items.front().text);
}

void ConfigurationReader::readOpen(std::string_view value) {
    constexpr std::array<std::string_view, 5> kPrograms{
        "auto", "thunderbird", "evolution", "kmail", "neomutt"};
    constexpr std::array<std::string_view, 3> kPlaces{"{file}", "{messageid}", "{folder}"};
    std::string command = readConfigurationCommand(value);
    const std::string lower = lowerCase(command);
    if (std::find(kPrograms.begin(), kPrograms.end(), lower) != kPrograms.end()) {
        configuration_.open = lower;
        return;
    }
    const bool hasPlace = std::any_of(kPlaces.begin(), kPlaces.end(), [&](std::string_view place) {
        return command.find(place) != std::string::npos;
    });
    if (!hasPlace) {
        addProblem(
            "open is auto, thunderbird, evolution, kmail, neomutt, or a command with "
            "{file}, {messageid} or {folder}");
    } else if (!wordsOf(command)) {
        addProblem("open: the quotes of the command do not match");
    } else {
        configuration_.open = std::move(command);
    }
}

template <bool Configuration::*Member>
void ConfigurationReader::readFlag(std::string_view value) {
    const std::string word = lowerCase(singleValue(value).value_or("no"));
    const bool isTrue = word == "true" || word == "yes";
    if (!isTrue && word != "false" && word != "no") {
        addProblem(std::string(key_) + " is true or false, not " + inQuotes(word));
    }
    configuration_.*Member = isTrue;
}

void ConfigurationReader::readName(std::string_view value) {
    account_.name = singleValue(value).value_or("");
}

void ConfigurationReader::readMaildir(std::string_view value) {
    const std::optional<std::string> text = singleValue(value);
    if (!text) {
        return;
    }
    if (std::optional<std::string> path = absolutePath(*text, folders_.home)) {
        account_.maildir = std::move(*path);
    } else {
        addProblem("maildir is a folder that begins with / or ~/, not " + inQuotes(*text));
    }
}

void ConfigurationReader::readLayout(std::string_view value) {
    const std::optional<std::string> text = singleValue(value);
    const std::optional<Layout> layout = layoutOfName(text.value_or("auto"));
    if (!layout) {
        addProblem("layout is auto, verbatim, maildir++, legacy or kmail, not " + inQuotes(*text));
    }
    account_.layout = layout.value_or(Layout::Auto);
}

template <std::vector<std::string> AccountConfiguration::*Member>
void ConfigurationReader::readFolders(std::string_view value) {
    const ConfigurationItems read = readConfigurationList(value);
    if (!read.problem.empty()) {
        addProblem(std::string(key_) + ": " + read.problem);
    }
    for (const ConfigurationItem& item : read.items) {
        addFolder(item.text, account_.*Member);
    }
}

void ConfigurationReader::readTodo(std::string_view value) {
    const ConfigurationItems read = readConfigurationList(value);
    if (!read.problem.empty()) {
        addProblem("todo: " + read.problem);
    }
    for (const ConfigurationItem& item : read.items) {
        if (!item.isQuoted && equalsIgnoringAsciiCase(item.text, kFlagged)) {
            account_.todoIsFlagged = true;
        } else {
            addFolder(item.text, account_.todo);
        }
    }
}

void ConfigurationReader::addFolder(std::string_view name, std::vector<std::string>& names) {
    if (name.empty()) {
        addProblem(std::string(key_) + " lacks the name of a folder");
    } else if (std::optional<std::string> path = absolutePath(name, folders_.home); path) {
        names.push_back(std::move(*path));
    } else if (hasParentComponent(name)) {
        addProblem(std::string(key_) +
                   ": a folder's name cannot lead out of the Maildir by \"..\"");
    } else {
        names.emplace_back(name);
    }
}

void ConfigurationReader::readShow(std::string_view value) {
    const std::string word = lowerCase(singleValue(value).value_or("all"));
    account_.onlyUnread = word == "unread";
    if (!account_.onlyUnread && word != "all") {
        addProblem("show is all or unread, not " + inQuotes(word));
    }
}

void ConfigurationReader::readAfterChange(std::string_view value) {
    const std::string command = readConfigurationCommand(value);
    std::optional<std::vector<std::string>> words =
        command.empty() ? std::vector<std::string>() : wordsOf(command);
    if (words) {
        account_.afterChange = std::move(*words);
        // What a shell would do with the home folder.
        for (std::string& word : account_.afterChange) {
            if (word.starts_with("~/")) {
                word.replace(0, 1, folders_.home);
            }
        }
    } else {
        addProblem("after-change: the quotes of the command do not match");
    }
}

}  // namespace

std::variant<Configuration, std::vector<ConfigurationProblem>> readConfiguration(
    std::string_view text, const UserFolders& folders) {
    if (text.size() > kLongestText) {
        return std::vector<ConfigurationProblem>{{1, "the file is longer than 1 MiB"}};
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    ConfigurationReader reader(folders);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        reader.readLine(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return reader.finish();
}

}  // namespace quillet::mailhost
