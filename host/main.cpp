// A sample host application: writes the container that the Today widget reads.

#include <QCoreApplication>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/SampleStore.h"
#include "host/StoreWriter.h"
#include "platform/desktop/DistributedNotificationCenter.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kWrongUsage = 2;

constexpr std::string_view kUsage =
    R"(Usage: quillet-sample-host write DIR [--bundle-identifier ID] [--verbose]

Writes a sample mail store into the container DIR, making it where it is missing and replacing
files of the same name, then tells a running Today widget to read it.

Options:
  --bundle-identifier ID   write for the widget of this identifier; one that begins with
                           "it.tarno.quillet.beta" has its own data folder
  --verbose                name the files, and say whether the widget could be told
  --help                   show this text
  --version                tell the version
)";

struct Arguments {
    std::vector<std::string> words;
    std::optional<std::string> bundleIdentifier;
    bool isVerbose = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
    std::string problem;  // empty: none
};

Arguments parse(const std::vector<std::string>& given) {
    Arguments arguments;
    for (std::size_t index = 0; index < given.size(); ++index) {
        const std::string& word = given[index];
        if (word == "--help" || word == "-h") {
            arguments.wantsHelp = true;
        } else if (word == "--version") {
            arguments.wantsVersion = true;
        } else if (word == "--verbose") {
            arguments.isVerbose = true;
        } else if (word == "--bundle-identifier" && index + 1 < given.size()) {
            arguments.bundleIdentifier = given[++index];
        } else if (word == "--bundle-identifier") {
            arguments.problem = "--bundle-identifier needs an identifier";
        } else if (word.starts_with("-")) {
            arguments.problem = "there is no option " + word;
        } else {
            arguments.words.push_back(word);
        }
    }
    return arguments;
}

// What is wrong with the words that are no options; empty where nothing is.
std::string problemOf(const std::vector<std::string>& words) {
    if (words.empty()) {
        return "a command is missing";
    }
    if (words[0] != "write") {
        return "there is no command \"" + words[0] + "\"";
    }
    if (words.size() == 1 || words[1].empty()) {
        return "\"write\" needs a folder";
    }
    return words.size() > 2 ? "\"write\" takes one folder" : "";
}

int write(const std::string& container, bool isVerbose) {
    using namespace quillet;
    const std::string folder = host::dataFolder(container);
    const auto files = host::sampleStore(host::currentSampleTime());
    if (const auto failure = host::writeStore(folder, files)) {
        std::cerr << "quillet-sample-host: " << failure->error.description() << '\n'
                  << (failure->isOfLock
                          ? "Let XDG_RUNTIME_DIR name a folder that is yours alone, or TMPDIR one "
                            "that you may write into.\n"
                          : "Name a folder that you may write into.\n");
        return kFailure;
    }
    const bool isTold = platform::DistributedNotificationCenter::defaultCenter().postNotification(
        "k_today_widget_key", "k_today_widget_object");
    if (isVerbose) {
        for (const auto& file : files) {
            std::cout << folder << '/' << file.path << '\n';
        }
        std::cout << (isTold ? "Told the widget to read it.\n"
                             : "There is no session bus on which to tell the widget.\n");
    }
    return kSuccess;
}

}  // namespace

int main(int argc, char** argv) {
    const Arguments arguments = parse({argv + 1, argv + argc});
    if (arguments.wantsHelp) {
        std::cout << kUsage;
        return kSuccess;
    }
    if (arguments.wantsVersion) {
        std::cout << "quillet-sample-host " QUILLET_VERSION "\n";
        return kSuccess;
    }
    const std::string problem =
        arguments.problem.empty() ? problemOf(arguments.words) : arguments.problem;
    if (!problem.empty()) {
        std::cerr << "quillet-sample-host: " << problem << "\n\n" << kUsage;
        return kWrongUsage;
    }
    if (arguments.bundleIdentifier) {
        setenv("QUILLET_BUNDLE_IDENTIFIER", arguments.bundleIdentifier->c_str(), 1);
    }
    const QCoreApplication application(argc, argv);  // the session bus needs one
    return write(arguments.words[1], arguments.isVerbose);
}
