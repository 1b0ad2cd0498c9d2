#include "mailhost/accounts/Configuration.h"

#include <cstdlib>
#include <glib.h>
#include <memory>

#include "mailhost/accounts/ConfigurationValue.h"
#include "mailhost/accounts/HomePath.h"

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

// A relative path has no meaning in these variables.
std::string environmentFolder(const char* variable, const std::string& otherwise) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? *absolutePath(value, "") : otherwise;
}

class ConfigurationWriter {
public:
    explicit ConfigurationWriter(const UserFolders& folders) : folders_(folders) {}

    void beginSection(const std::string& title) {
        text_ += (text_.empty() ? "[" : "\n[") + title + "]\n";
    }

    void writeLine(std::string_view key, const std::string& value) {
        text_.append(key).append(" = ").append(value).append("\n");
    }

    void writeFolders(std::string_view key, const std::vector<std::string>& names) {
        writeItems(key, itemsOf(names));
    }

    // The word without quotes stands for the flagged messages, the one in quotes for a folder.
    void writeTodo(const AccountConfiguration& account) {
        std::vector<std::string> items = itemsOf(account.todo);
        for (std::string& item : items) {
            if (platform::equalsIgnoringAsciiCase(item, kFlagged)) {
                item = quotedConfigurationItem(item);
            }
        }
        if (account.todoIsFlagged) {
            items.emplace(items.begin(), kFlagged);
        }
        writeItems("todo", items);
    }

    std::string takeText() { return std::move(text_); }

private:
    std::vector<std::string> itemsOf(const std::vector<std::string>& names) const {
        std::vector<std::string> items;
        items.reserve(names.size());
        for (const std::string& name : names) {
            items.push_back(configurationItemText(abbreviatedPath(name, folders_.home)));
        }
        return items;
    }

    void writeItems(std::string_view key, const std::vector<std::string>& items) {
        std::string list;
        for (const std::string& item : items) {
            list.append(list.empty() ? "" : ", ").append(item);
        }
        if (!list.empty()) {
            writeLine(key, list);
        }
    }

    const UserFolders& folders_;
    std::string text_;
};

bool isPlainWord(std::string_view word) {
    constexpr std::string_view kPlain = "-_./:=@%+,";
    for (const char character : word) {
        if (!platform::isAsciiAlphanumeric(character) &&
            kPlain.find(character) == std::string_view::npos) {
            return false;
        }
    }
    return !word.empty();
}

std::string commandLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        const std::unique_ptr<char, void (*)(void*)> quoted(g_shell_quote(word.c_str()), g_free);
        line.append(line.empty() ? "" : " ").append(isPlainWord(word) ? word : quoted.get());
    }
    return line;
}

void writeGeneral(const Configuration& configuration, ConfigurationWriter& writer) {
    const Configuration usual;
    const bool opensUsually = configuration.open == usual.open;
    if (opensUsually && configuration.notices == usual.notices &&
        configuration.notify == usual.notify) {
        return;
    }
    writer.beginSection("general");
    if (!opensUsually) {
        writer.writeLine("open", configurationItemText(configuration.open));
    }
    if (configuration.notices != usual.notices) {
        writer.writeLine("notices", "false");
    }
    if (configuration.notify != usual.notify) {
        writer.writeLine("notify", "true");
    }
}

void writeAccount(const AccountConfiguration& account,
                  const UserFolders& folders,
                  ConfigurationWriter& writer) {
    writer.beginSection("account " + account.address);
    if (!account.name.empty()) {
        writer.writeLine("name", configurationItemText(account.name));
    }
    writer.writeLine("maildir",
                     configurationItemText(abbreviatedPath(account.maildir, folders.home)));
    if (account.layout != Layout::Auto) {
        writer.writeLine("layout", std::string(layoutName(account.layout)));
    }
    writer.writeFolders("inbox", account.inbox);
    writer.writeFolders("archive", account.archive);
    writer.writeFolders("trash", account.trash);
    writer.writeTodo(account);
    writer.writeFolders("memo", account.memo);
    if (account.onlyUnread) {
        writer.writeLine("show", "unread");
    }
    if (!account.afterChange.empty()) {
        writer.writeLine("after-change", commandLine(account.afterChange));
    }
}

}  // namespace

UserFolders UserFolders::ofEnvironment() {
    UserFolders folders;
    const char* home = g_get_home_dir();  // also asks the list of users, but only once
    folders.home = environmentFolder("HOME", absolutePath(home, "").value_or("/"));
    const std::string below = folders.home == "/" ? "" : folders.home;
    folders.config = environmentFolder("XDG_CONFIG_HOME", below + "/.config");
    folders.data = environmentFolder("XDG_DATA_HOME", below + "/.local/share");
    folders.state = environmentFolder("XDG_STATE_HOME", below + "/.local/state");
    return folders;
}

std::string configurationText(const Configuration& configuration, const UserFolders& folders) {
    ConfigurationWriter writer(folders);
    writeGeneral(configuration, writer);
    for (const AccountConfiguration& account : configuration.accounts) {
        writeAccount(account, folders, writer);
    }
    return writer.takeText();
}

}  // namespace quillet::mailhost
