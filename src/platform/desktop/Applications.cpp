#include "platform/desktop/Applications.h"

#include <algorithm>
#include <functional>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/desktop/GioReference.h"
#include "platform/url/URL.h"

namespace quillet::platform {

namespace {

constexpr std::string_view kTerminal = "x-terminal-emulator";

void unrefAll(GList* list) {
    g_list_free_full(list, g_object_unref);
}

bool isAmong(const GList* list, GAppInfo* info) {
    for (; list != nullptr; list = list->next) {
        if (g_app_info_equal(G_APP_INFO(list->data), info) != FALSE) {
            return true;
        }
    }
    return false;
}

// GIO also offers applications for more general types: mail is text, so an editor would show it.
Reference<GAppInfo> chosenFor(const std::string& type) {
    Reference<GAppInfo> chosen(g_app_info_get_default_for_type(type.c_str(), FALSE));
    const Reference<GAppInfo> editor(g_app_info_get_default_for_type("text/plain", FALSE));
    if (!chosen || !editor || g_app_info_equal(chosen.get(), editor.get()) == FALSE) {
        return chosen;
    }
    const std::unique_ptr<GList, decltype(&unrefAll)> exact(
        g_app_info_get_recommended_for_type(type.c_str()), &unrefAll);
    return isAmong(exact.get(), chosen.get()) ? std::move(chosen) : nullptr;
}

std::string identifierOf(GAppInfo* info) {
    constexpr std::string_view kSuffix = ".desktop";
    const char* const id = g_app_info_get_id(info);
    const std::string_view name = id == nullptr ? "" : id;
    return std::string(name.ends_with(kSuffix) ? name.substr(0, name.size() - kSuffix.size())
                                               : name);
}

bool takesTarget(char code) {
    return code == 'u' || code == 'U' || code == 'f' || code == 'F';
}

// What stands for files and URLs, which a field code takes in one form or the other.
using Targets = std::function<std::vector<std::string>(char code)>;

// A word of "Exec" with what stands for the field codes within it. Codes for icons and for the
// entry itself are left out.
std::string expandedWord(const std::string& word, const std::string& name, const Targets& targets) {
    std::string text;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] != '%' || at + 1 == word.size()) {
            text += word[at];
            continue;
        }
        const char code = word[++at];
        if (code == '%') {
            text += '%';
        } else if (code == 'c') {
            text += name;
        } else if (takesTarget(code)) {
            const std::vector<std::string> words = targets(code);
            text += words.empty() ? "" : words.front();
        }
    }
    return text;
}

bool hasTarget(const std::string& word) {
    for (std::size_t at = word.find('%'); at < word.size(); at = word.find('%', at + 2)) {
        if (at + 1 < word.size() && takesTarget(word[at + 1])) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> commandWith(const Application& application, const Targets& targets) {
    std::vector<std::string> command;
    const auto append = [&command](const std::vector<std::string>& words) {
        command.insert(command.end(), words.begin(), words.end());
    };
    for (const std::string& word : application.command) {
        const bool isCode = word.size() == 2 && word[0] == '%';
        if (isCode && takesTarget(word[1])) {
            append(targets(word[1]));
        } else if (!isCode || word[1] == '%' || word[1] == 'c') {
            command.push_back(expandedWord(word, application.name, targets));
        }
    }
    if (std::none_of(application.command.begin(), application.command.end(), hasTarget)) {
        append(targets('f'));
    }
    return application.needsTerminal ? inTerminal(command) : command;
}

}  // namespace

std::optional<Application> applicationFor(const std::string& type) {
    const Reference<GAppInfo> info = chosenFor(type);
    const char* const line = info ? g_app_info_get_commandline(info.get()) : nullptr;
    auto words = line == nullptr ? std::nullopt : wordsOfCommand(line);
    if (!words) {
        return std::nullopt;
    }
    const bool needsTerminal =
        G_IS_DESKTOP_APP_INFO(info.get()) &&
        g_desktop_app_info_get_boolean(G_DESKTOP_APP_INFO(info.get()), "Terminal") != FALSE;
    return Application{identifierOf(info.get()),
                       g_app_info_get_name(info.get()),
                       *std::move(words),
                       needsTerminal};
}

std::vector<std::string> commandOf(const Application& application,
                                   const std::vector<std::string>& words) {
    return commandWith(application, [&words](char /*code*/) { return words; });
}

std::vector<std::string> commandForFile(const Application& application, const std::string& path) {
    return commandWith(application, [&path](char code) {
        const bool isUrl = code == 'u' || code == 'U';
        return std::vector{isUrl ? URL::fileURLWithPath(path).absoluteString() : path};
    });
}

std::optional<std::vector<std::string>> wordsOfCommand(const std::string& line) {
    int count = 0;
    char** words = nullptr;
    if (g_shell_parse_argv(line.c_str(), &count, &words, nullptr) == FALSE) {
        return std::nullopt;
    }
    const std::unique_ptr<char*, decltype(&g_strfreev)> owner(words, &g_strfreev);
    return std::vector<std::string>(words, words + count);
}

std::vector<std::string> inTerminal(const std::vector<std::string>& command) {
    std::vector<std::string> words{std::string(kTerminal), "-e"};
    words.insert(words.end(), command.begin(), command.end());
    return words;
}

}  // namespace quillet::platform
