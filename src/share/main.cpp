#include <QEventLoop>
#include <QGuiApplication>
#include <QTimer>
#include <any>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <unistd.h>
#include <vector>

#include "share/ShareCommandLine.h"
#include "share/ShareStaging.h"
#include "share/SharedItems.h"

#include "handoff/AttachmentPath.h"
#include "handoff/Gathering.h"
#include "handoff/MessageUrl.h"
#include "model/ExtensionAddress.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/Display.h"
#include "platform/desktop/Queues.h"
#include "platform/desktop/StopSignals.h"
#include "platform/desktop/Workspace.h"
#include "platform/extension/Bundle.h"
#include "platform/files/LockWait.h"
#include "platform/files/Uninterrupted.h"
#include "widget/HostCommands.h"

namespace quillet {

using platform::ExtensionContext;
using platform::ExtensionItem;
using platform::Item;
using platform::Result;
using platform::StyledText;
using platform::URL;

namespace {

int failure(const std::string& reason) {
    platform::writeErrorLine("quillet-share: " + reason);
    return platform::kFailure;
}

Result<ExtensionItem> itemOfStandardInput(TextKind kind) {
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
            return itemOfBytes(bytes, kind, "standard input");
        }
        if (bytes.size() > kLimit) {
            return platform::posixError(
                EFBIG, "standard input is larger than 256 MiB; share it as a file");
        }
    }
}

// What the command line names and can be shared. The rest is reported.
struct Input {
    ExtensionContext context;
    bool isComplete = true;
    std::size_t files = 0;     // that have to be staged
    std::uintmax_t bytes = 0;  // of the files that are copied
};

// Puts a space after a link, which the text that follows in the body would touch. Counts what has
// to be staged: files, and pictures, whose size is not known yet.
void addAttachment(Input& input, const Result<Item>& loaded) {
    const URL* url = loaded ? std::get_if<URL>(&loaded.value()) : nullptr;
    if (url != nullptr && !url->isFileURL()) {
        input.context.inputItems.push_back({{}, StyledText{{}, " "}, {}});
        return;
    }
    ++input.files;
    std::error_code unknown;
    const std::uintmax_t size =
        url != nullptr ? std::filesystem::file_size(url->path(), unknown) : 0;
    input.bytes += unknown ? 0 : size;
}

void addItem(Input& input, const ExtensionItem& item) {
    input.context.inputItems.push_back(item);
    for (const auto& attachment : item.attachments) {
        attachment->loadItem(platform::kUTTypeURL, [&input](const Result<Item>& loaded) {
            addAttachment(input, loaded);
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
    for (const Result<ExtensionItem>& item : found) {
        if (item) {
            addItem(input, item.value());
        } else {
            failure(item.error().text);
            input.isComplete = false;
        }
    }
    return input;
}

ShareStaging beginStaging(const ShareCommandLine& line, const Input& input) {
    if (line.service) {
        return ShareStaging::inFolderOf(*line.service);
    }
    return input.files > 0 ? ShareStaging::inOwnFolder(std::chrono::system_clock::now())
                           : ShareStaging();
}

std::uintmax_t bytesIn(const std::filesystem::path& folder) {
    std::uintmax_t bytes = 0;
    std::error_code gone;  // files may be renamed meanwhile
    for (std::filesystem::directory_iterator entry(folder, gone), end; !gone && entry != end;
         entry.increment(gone)) {
        std::error_code unknown;
        const std::uintmax_t size = entry->file_size(unknown);
        bytes += unknown ? 0 : size;
    }
    return bytes;
}

// Shows on a terminal how far the staging of large files has come, beginning after one second.
// Shows nothing if standard error is not a terminal. Works while the event loop runs.
class StagingProgress {
public:
    // Watches how the staging folder at `folder` grows to `total` bytes.
    StagingProgress(const std::string& folder, std::uintmax_t total)
        : folder_(folder), total_(total) {
        if (total_ > 0 && ::isatty(STDERR_FILENO) == 1) {
            timer_.callOnTimeout([this] { show(); });
            timer_.start(std::chrono::seconds(1));
        }
    }
    ~StagingProgress() {
        if (isShown_) {
            std::fputs("\r\033[K", stderr);
        }
    }
    StagingProgress(const StagingProgress&) = delete;
    StagingProgress& operator=(const StagingProgress&) = delete;

private:
    void show() {
        isShown_ = true;
        const double share = static_cast<double>(bytesIn(folder_)) / static_cast<double>(total_);
        std::fprintf(stderr, "\rquillet-share: staging the files, %.0f %%", 100 * share);
    }

    const std::string& folder_;
    std::uintmax_t total_;  // bytes
    QTimer timer_;
    bool isShown_ = false;
};

// The draft of what is shared. A signal that asks the program to end ends it meanwhile.
std::shared_ptr<ExtensionMessage> gather(const ExtensionContext& context,
                                         const ShareStaging& staging,
                                         std::uintmax_t bytes) {
    std::shared_ptr<ExtensionMessage> draft;
    QEventLoop loop;
    std::optional<platform::StopSignals> stopSignals(std::in_place);
    stopSignals->connect([&loop] { loop.quit(); });
    ExtensionUtilities::GetItemForExtension(
        context,
        staging.service(),
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
        staging.abandon();
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

std::string_view host() {
    return ExtensionUtilities::targetBundleIdentifier(platform::Bundle::main().identifier());
}

int noHost() {
    return failure("there is no mail application " + std::string(host()));
}

int open(const URL& url) {
    if (!ExtensionUtilities::LaunchCommands({&url, 1}, false)) {
        return noHost();
    }
    auto& workspace = platform::Workspace::sharedWorkspace();
    return workspace.flush() && !workspace.hasLostRequests()
               ? 0
               : failure("the mail application did not take the draft");
}

std::vector<std::string> attachmentPaths(const ExtensionMessage& draft) {
    std::vector<std::string> paths;
    for (const std::any& attachment :
         draft.attachments().value_or(ExtensionMessage::Attachments())) {
        paths.push_back(attachmentPath(attachment).value_or(std::string()));
    }
    return paths;
}

// Opens or prints the draft. Returns the number of attachments in it, which leaves out those whose
// path is not UTF-8, or none if the draft was not handed over.
std::optional<std::size_t> handOver(const ExtensionMessage& draft, const ShareCommandLine& line) {
    const auto url = queryUrl(draft, line.command);
    if (!url) {
        failure("the draft makes no URL");
        return std::nullopt;
    }
    const std::size_t attachments = ExtensionMessageWithUrl(*url)->attachments()->size();
    if (attachments == 0 && draft.htmlBody()->empty()) {
        failure("nothing could be shared");
        return std::nullopt;
    }
    const int status = line.print ? print(*url) : open(*url);
    return status == 0 ? std::optional(attachments) : std::nullopt;
}

// Hands what the command line names to the mail application as a draft, or prints the draft's URL.
// Returns the exit status: what cannot be shared makes it a failure while the rest is shared.
int runShare(const ShareCommandLine& line) {
    platform::tellOfLongLockWaits("quillet-share");
    Input input = readInput(line);
    if (input.context.inputItems.empty()) {
        return platform::kFailure;
    }
    if (!line.print && !platform::Workspace::sharedWorkspace().knowsApplication(host())) {
        return noHost();
    }
    for (ExtensionItem& item : input.context.inputItems) {
        item.attributedTitle =
            line.title ? std::optional(StyledText{*line.title, {}}) : std::nullopt;
    }
    const ShareStaging staging = beginStaging(line, input);
    const auto draft = gather(input.context, staging, input.bytes);
    address(*draft, line);
    const auto attachments = handOver(*draft, line);
    const bool isComplete = input.isComplete && attachments == input.files;
    if (!isComplete && attachments.value_or(0) == 0) {
        staging.discard(attachmentPaths(*draft));
    }
    return isComplete ? platform::kSuccess : platform::kFailure;
}

// Only the clipboard needs a display.
std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withClipboard) {
    if (!withClipboard) {
        return std::make_unique<QCoreApplication>(argc, argv);
    }
    // A Wayland desktop gives its clipboard only to windows, but to every X11 program.
    if (std::getenv("DISPLAY") != nullptr) {
        setenv("QT_QPA_PLATFORM", "xcb;wayland", 0);
    }
    return std::make_unique<QGuiApplication>(argc, argv);
}

}  // namespace
}  // namespace quillet

int main(int argc, char** argv) {
    using namespace quillet;
    const auto read = readShareCommandLine({argv, static_cast<std::size_t>(argc)});
    if (const auto* exit = std::get_if<platform::EarlyExit>(&read)) {
        return platform::finish(*exit);
    }
    const auto& line = std::get<ShareCommandLine>(read);
    const bool withClipboard = line.items.empty();
    if (withClipboard && !platform::hasDisplay()) {
        platform::writeErrorLine(
            "quillet-share: there is no display whose clipboard could be shared; name files or "
            "links, or \"-\" for standard input");
        return platform::kFailure;
    }
    const auto application = makeApplication(argc, argv, withClipboard);
    QCoreApplication::setApplicationName(QStringLiteral("quillet-share"));
    return runShare(line);
}
