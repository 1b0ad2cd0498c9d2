#include "host/Draft.h"

#include <algorithm>
#include <any>
#include <array>
#include <cerrno>
#include <string_view>
#include <unistd.h>

#include "handoff/MessageRendering.h"
#include "handoff/MessageUrl.h"
#include "handoff/StagedFile.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/RegularFile.h"

namespace quillet::host {

namespace {

using State = DraftAttachment::State;

constexpr std::size_t kMostPictures = std::size_t{64} << 20U;  // bytes of all of a draft

// By their first bytes. Pictures of other kinds, vector graphics above all, may name further files.
bool isPicture(std::string_view start) {
    constexpr std::array<std::string_view, 4> kStarts{"\x89PNG\r\n", "\xFF\xD8\xFF", "GIF8", "BM"};
    return std::any_of(kStarts.begin(), kStarts.end(), [start](std::string_view each) {
        return start.starts_with(each);
    });
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

void takeAttachment(const platform::FileCoordinator& coordinator,
                    const std::string& dataFolder,
                    DraftAttachment& attachment,
                    std::size_t mostBytes) {
    // A draft may name any number of paths, and each lock leaves a file.
    const auto named = stagedFile(dataFolder, attachment.path);
    if (!named) {
        return;
    }
    if (!platform::FileManager::folderExists(named->folder)) {
        attachment.state = State::Missing;
        return;
    }
    coordinator.coordinateReading(attachment.path, [&](const std::string& path) {
        // Resolved again: whoever shares may have put a link there meanwhile.
        if (const auto staged = stagedFile(dataFolder, path)) {
            takeFile(staged->path, attachment, mostBytes);
        }
    });
}

std::vector<DraftAttachment> takeAttachments(const ExtensionMessage::Attachments& named,
                                             const std::string& dataFolder) {
    const platform::FileCoordinator coordinator(dataFolder);
    std::vector<DraftAttachment> attachments;
    std::size_t room = kMostPictures;
    for (const std::any& each : named) {
        DraftAttachment& attachment = attachments.emplace_back();
        attachment.path = std::any_cast<const std::string&>(each);
        takeAttachment(coordinator, dataFolder, attachment, room);
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
