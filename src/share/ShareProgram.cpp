#include "share/ShareProgram.h"

#include <QEventLoop>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <unistd.h>

#include "share/SharedItems.h"
#include "share/StagingProgress.h"
#include "share/StagingWord.h"

#include "handoff/ExtensionUtilities.h"
#include "handoff/MessageUrl.h"
#include "model/ExtensionUtilities.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"
#include "platform/foundation/Bundle.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Path.h"
#include "platform/foundation/Uninterrupted.h"
#include "widget/ExtensionUtilities.h"

namespace quillet {

using platform::ExtensionContext;
using platform::ExtensionItem;
using platform::Item;
using platform::Result;
using platform::StyledText;
using platform::URL;

namespace {

constexpr int kFailure = 1;

int failure(const std::string& reason) {
    std::fprintf(stderr, "quillet-share: %s\n", reason.c_str());
    return kFailure;
}

Result<std::string> standardInput() {
    constexpr std::size_t kLimit = std::size_t{256} * 1024 * 1024;  // bytes
    constexpr std::size_t kStep = 65536;
    std::string bytes;
    for (;;) {
        const std::size_t used = bytes.size();
        bytes.resize(used + kStep);
        const ssize_t count = platform::uninterrupted(
            [&] { return ::read(STDIN_FILENO, bytes.data() + used, kStep); });
        if (count < 0) {
            return platform::posixError(errno, "standard input cannot be read");
        }
        bytes.resize(used + static_cast<std::size_t>(count));
        if (count == 0) {
            return bytes;
        }
        if (bytes.size() > kLimit) {
            return platform::posixError(
                EFBIG, "standard input is larger than 256 MiB; share it as a file");
        }
    }
}

Result<ExtensionItem> itemOfStandardInput(TextKind kind) {
    const Result<std::string> bytes = standardInput();
    return bytes ? itemOfBytes(bytes.value(), kind, "standard input") : bytes.error();
}

// What the command line names, as far as it can be shared; the rest is told.
struct Input {
    ExtensionContext context;
    bool isComplete = true;
};

bool isLink(const Result<Item>& loaded) {
    const URL* url = loaded ? std::get_if<URL>(&loaded.value()) : nullptr;
    return url != nullptr && !url->isFileURL();
}

// Ends the line behind a link: what follows it in the body would touch it. The attachments are
// copied, since the items move when one is added.
void endLinkLine(std::vector<ExtensionItem>& items) {
    const std::vector<std::shared_ptr<platform::ItemProvider>> attachments =
        items.back().attachments;
    for (const auto& attachment : attachments) {
        attachment->loadItem(platform::kUTTypeURL, [&items](const Result<Item>& loaded) {
            if (isLink(loaded)) {
                items.push_back({{}, StyledText{{}, " "}, {}});
            }
        });
    }
}

Input readInput(const ShareCommandLine& line) {
    std::vector<Result<ExtensionItem>> found;
    for (const std::string& word : line.items) {
        found.push_back(word == "-" ? itemOfStandardInput(line.textKind) : itemOfWord(word));
    }
    if (line.items.empty()) {
        found = itemsOfClipboard(line.textKind);
        if (found.empty()) {
            failure("the clipboard holds nothing to share");
        }
    }
    Input input;
    for (Result<ExtensionItem>& item : found) {
        if (item) {
            input.context.inputItems.push_back(std::move(item.value()));
            endLinkLine(input.context.inputItems);
        } else {
            failure(item.error().text);
            input.isComplete = false;
        }
    }
    return input;
}

// What has to be staged of an input, whose items are all there already.
struct Load {
    std::size_t files = 0;
    std::uintmax_t bytes = 0;  // of the files that are copied
};

// Adds an attachment: a link is not staged; a picture is, and nothing is known of its size.
void addTo(Load& load, const Result<Item>& loaded) {
    if (isLink(loaded)) {
        return;
    }
    ++load.files;
    const URL* url = loaded ? std::get_if<URL>(&loaded.value()) : nullptr;
    std::error_code unknown;
    const std::uintmax_t size =
        url != nullptr ? std::filesystem::file_size(url->path(), unknown) : 0;
    load.bytes += unknown ? 0 : size;
}

Load loadOf(const ExtensionContext& context) {
    Load load;
    for (const ExtensionItem& item : context.inputItems) {
        for (const auto& attachment : item.attachments) {
            attachment->loadItem(platform::kUTTypeURL,
                                 [&load](const Result<Item>& loaded) { addTo(load, loaded); });
        }
    }
    return load;
}

// Where the files are staged.
struct Staging {
    std::string service;  // "" where nothing is
    bool isOwn = false;   // the folder was made for this share

    std::string folder() const {
        return platform::Path::appendingPathComponent(
            ExtensionUtilities::GroupDataPath().value_or(std::string()), service);
    }
};

Staging beginStaging(const ShareCommandLine& line, const Load& load) {
    Staging staging{line.service.value_or(std::string()), !line.service && load.files > 0};
    if (staging.isOwn) {
        staging.service = newStagingWord(std::chrono::system_clock::now());
    }
    if (line.service || staging.isOwn) {
        ExtensionUtilities::ShareInit(staging.service);
    }
    return staging;
}

// Removes what is staged so far, in a folder that nobody else knows of yet. A copy may go on under
// the folder's lock, which is not waited for, and add a file meanwhile.
void removeStaged(const Staging& staging) {
    constexpr int kMostTries = 10;
    const std::string folder = staging.isOwn ? staging.folder() : std::string();
    for (int tries = 0; tries < kMostTries && platform::FileManager::folderExists(folder);
         ++tries) {
        (void)platform::FileManager::removeItem(folder);
    }
}

// The draft of what is shared. A signal that asks the program to end meanwhile ends it.
std::shared_ptr<ExtensionMessage> gather(const ExtensionContext& context,
                                         const Staging& staging,
                                         std::uintmax_t bytes) {
    std::shared_ptr<ExtensionMessage> draft;
    QEventLoop loop;
    std::optional<platform::StopSignals> stopSignals(std::in_place);
    stopSignals->connect([&loop] { loop.quit(); });
    ExtensionUtilities::GetItemForExtension(
        context,
        staging.service,
        [&](const std::shared_ptr<ExtensionMessage>& message, int /*error*/) {
            platform::mainQueue().async([&draft, &loop, message] {
                draft = message;
                loop.quit();
            });
        });
    {
        const StagingProgress progress(staging.folder(), bytes);
        loop.exec();
    }
    stopSignals.reset();
    if (const int signal = platform::StopSignals::received(); signal != 0) {
        removeStaged(staging);
        std::raise(signal);
    }
    return draft;
}

void address(ExtensionMessage& draft, const ShareCommandLine& line) {
    if (line.title) {
        draft.setSubject(line.title);
    }
    ExtensionMessage::Recipients recipients;
    for (const std::string& mail : line.recipients) {
        recipients.push_back(std::make_shared<ExtensionAddress>());
        recipients.back()->setMail(mail);
    }
    draft.setTo(std::move(recipients));
}

int print(const URL& url) {
    const std::string text = url.absoluteString() + "\n";
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() ||
        std::fflush(stdout) != 0) {
        return failure(std::string("the URL cannot be printed: ") + std::strerror(errno));
    }
    return 0;
}

int open(const URL& url) {
    if (!ExtensionUtilities::LaunchCommands({&url, 1}, false)) {
        const auto own = platform::Bundle::main().identifier();
        return failure("there is no mail application " +
                       std::string(ExtensionUtilities::targetBundleIdentifier(own)));
    }
    return platform::Workspace::sharedWorkspace().flush()
               ? 0
               : failure("the mail application did not take the draft");
}

}  // namespace

int runShare(const ShareCommandLine& line) {
    Input input = readInput(line);
    if (input.context.inputItems.empty()) {
        return kFailure;
    }
    for (ExtensionItem& item : input.context.inputItems) {
        item.attributedTitle =
            line.title ? std::optional(StyledText{*line.title, {}}) : std::nullopt;
    }
    const Load load = loadOf(input.context);
    const auto draft = gather(input.context, beginStaging(line, load), load.bytes);
    address(*draft, line);
    const std::size_t staged = draft->attachments()->size();
    if (staged == 0 && draft->htmlBody()->empty()) {
        return failure("nothing could be shared");
    }
    const auto url = queryUrl(*draft, line.command);
    if (!url) {
        return failure("the draft makes no URL");
    }
    const int status = line.print ? print(*url) : open(*url);
    return status == 0 && input.isComplete && staged == load.files ? 0 : kFailure;
}

}  // namespace quillet
