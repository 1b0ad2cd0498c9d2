#include "host/Draft.h"

#include <algorithm>
#include <any>
#include <array>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <unistd.h>

#include "handoff/MessageRendering.h"
#include "handoff/MessageUrl.h"
#include "platform/foundation/FileCoordinator.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/RegularFile.h"

namespace quillet::host {

namespace {

namespace fs = std::filesystem;
using State = DraftAttachment::State;

constexpr std::size_t kMostPictures = std::size_t{64} << 20U;  // bytes of all of a draft

// By their first bytes. Pictures of other kinds, vector graphics above all, may name further files.
bool isPicture(std::string_view start) {
    constexpr std::array<std::string_view, 4> kStarts{"\x89PNG\r\n", "\xFF\xD8\xFF", "GIF8", "BM"};
    return std::any_of(kStarts.begin(), kStarts.end(), [start](std::string_view each) {
        return start.starts_with(each);
    });
}

// The path without symbolic links where it lies in the folder; empty where it does not. The file
// need not be there.
std::string pathInside(const fs::path& folder, const std::string& path) {
    if (!path.starts_with('/') || path.find('\0') != std::string::npos) {
        return {};
    }
    std::error_code failure;
    const fs::path root = fs::canonical(folder, failure);
    if (failure) {
        return {};
    }
    const fs::path canonical = fs::weakly_canonical(path, failure);
    const auto end = std::mismatch(root.begin(), root.end(), canonical.begin(), canonical.end());
    const bool isInside = !failure && end.first == root.end() && end.second != canonical.end();
    return isInside ? canonical.string() : std::string();
}

void takePicture(const std::string& path, DraftAttachment& attachment, std::size_t mostBytes) {
    platform::ByteBuffer bytes;
    if (!platform::FileManager::readFile(path, bytes, mostBytes)) {
        attachment.picture = bytes.view();
    }
}

void takeFile(const std::string& path, DraftAttachment& attachment, std::size_t mostBytes) {
    const auto opened = platform::openRegularFile(path);
    if (!opened) {
        attachment.state = opened.error().code == ENOENT ? State::Missing : State::Unreadable;
        return;
    }
    attachment.state = State::Taken;
    attachment.size = opened.value().size;
    std::array<char, 8> start{};
    const ssize_t read = ::pread(opened.value().file.get(), start.data(), start.size(), 0);
    if (read > 0 && isPicture({start.data(), static_cast<std::size_t>(read)})) {
        takePicture(path, attachment, mostBytes);
    }
}

std::vector<DraftAttachment> takeAttachments(const ExtensionMessage::Attachments& named,
                                             const std::string& dataFolder) {
    const platform::FileCoordinator coordinator(dataFolder);
    std::vector<DraftAttachment> attachments;
    std::size_t room = kMostPictures;
    for (const std::any& each : named) {
        DraftAttachment& attachment = attachments.emplace_back();
        attachment.path = std::any_cast<const std::string&>(each);
        // Resolved under the lock as well: whoever shares may put a link there meanwhile.
        coordinator.coordinateReading(attachment.path, [&](const std::string& /*path*/) {
            const std::string path = pathInside(dataFolder, attachment.path);
            if (!path.empty()) {
                takeFile(path, attachment, room);
            }
        });
        room -= attachment.picture.size();
    }
    return attachments;
}

ExtensionMessage::Attachments pathsOfPictures(const std::vector<DraftAttachment>& attachments) {
    ExtensionMessage::Attachments paths;
    for (const DraftAttachment& attachment : attachments) {
        if (!attachment.picture.empty()) {
            paths.emplace_back(attachment.path);
        }
    }
    return paths;
}

}  // namespace

Draft receiveDraft(const platform::URL& url, const std::string& dataFolder) {
    const auto message = ExtensionMessageWithUrl(url);
    Draft draft;
    draft.to = message->toString().value_or("");
    draft.cc = message->ccString().value_or("");
    draft.bcc = message->bccString().value_or("");
    draft.subject = message->subject().value_or("");
    draft.attachments = takeAttachments(
        message->attachments().value_or(ExtensionMessage::Attachments()), dataFolder);
    // In the body stand the pictures that can be shown, and no gaps for the other files.
    message->setAttachments(pathsOfPictures(draft.attachments));
    draft.body = renderHtml(*message);
    return draft;
}

}  // namespace quillet::host
