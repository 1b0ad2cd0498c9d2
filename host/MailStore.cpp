#include "host/MailStore.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/PropertyListReader.h"
#include "host/PropertyListWriter.h"
#include "model/ContainerPaths.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "platform/plist/PropertyList.h"

namespace quillet::host {

namespace {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;
using platform::Error;
using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

constexpr std::string_view kMessages = "data";

using Visit = std::function<void(const std::string& path, PropertyListDocument& document)>;

std::string todayOf(const std::string& dataFolder) {
    return Path::appendingPathComponent(dataFolder, "Today");
}

// Paths of a folder's visible entries in the order of their names; empty when it cannot be listed.
std::vector<std::string> visibleEntries(const std::string& folder) {
    auto paths = ExtensionUtilities::directoryContent(folder).value_or(std::vector<std::string>());
    std::sort(paths.begin(), paths.end());
    return paths;
}

// The messages of a file; absent where it is none of messages.
PropertyListValue messagesOf(const PropertyListDocument& document) {
    const PropertyListValue root = document.root();
    const PropertyListValue messages = root.type() == PropertyListType::Dictionary
                                           ? root.valueForKey(kMessages)
                                           : PropertyListValue();
    return messages.type() == PropertyListType::Array ? messages : PropertyListValue();
}

void visitMessageFiles(const std::string& today, const Visit& visit) {
    PropertyListDocument document;
    for (const std::string& folder : visibleEntries(today)) {
        for (const std::string& file : visibleEntries(folder)) {
            const bool isRead =
                !FileManager::readFile(
                    file, document.bytes(), PropertyListDocument::kMaximumFileSize) &&
                !document.parse();
            if (isRead && messagesOf(document)) {
                visit(file, document);
            }
        }
    }
}

// A text that is missing is the empty one to the widget.
bool isText(const PropertyListValue& value, const std::string& text) {
    return value.type() == PropertyListType::String ? value.stringValue() == text
                                                    : !value && text.empty();
}

bool isNamed(const PropertyListValue& message, const MessageKey& key) {
    return message.type() == PropertyListType::Dictionary &&
           isText(message.valueForKey("messageId"), key.identifier) &&
           isText(message.valueForKey("account"), key.account);
}

// The array under the last entry of the key: the one that readers look at.
Array& messagesOf(Value& root) {
    auto& entries = std::get<Dictionary>(root.content());
    const auto entry = std::find_if(entries.rbegin(), entries.rend(), [](const Entry& each) {
        return each.first == kMessages;
    });
    return std::get<Array>(entry->second.content());
}

PropertyListFormat formatOf(PropertyListDocument& document) {
    return document.bytes().view().starts_with("bplist") ? PropertyListFormat::Binary
                                                         : PropertyListFormat::Xml;
}

// Writes the file again without the messages that the key names; `copies` counts them.
std::optional<Error> removeFromFile(const std::string& path,
                                    PropertyListDocument& document,
                                    const MessageKey& key,
                                    std::size_t& copies) {
    std::vector<bool> isCopy;
    for (const PropertyListValue message : messagesOf(document)) {
        isCopy.push_back(isNamed(message, key));
    }
    const auto found = static_cast<std::size_t>(std::count(isCopy.begin(), isCopy.end(), true));
    if (found == 0) {
        return std::nullopt;
    }
    Value root = copyOf(document.root());
    Array& messages = messagesOf(root);
    Array kept;
    kept.reserve(messages.size() - found);
    for (std::size_t index = 0; index < messages.size(); ++index) {
        if (!isCopy[index]) {
            kept.push_back(std::move(messages[index]));
        }
    }
    messages = std::move(kept);
    auto error =
        FileManager::writeFileAtomically(path, writePropertyList(root, formatOf(document)));
    copies += error ? 0 : found;
    return error;
}

}  // namespace

platform::Result<std::size_t> removeMessage(const std::string& dataFolder, const MessageKey& key) {
    std::size_t copies = 0;
    std::optional<Error> failure;
    const auto remove = [&](const std::string& path, PropertyListDocument& document) {
        auto error = removeFromFile(path, document, key, copies);
        if (error && !failure) {
            failure = std::move(error);
        }
    };
    const auto lockError = platform::FileCoordinator(dataFolder)
                               .coordinateWriting(todayOf(dataFolder), [&](const auto& today) {
                                   visitMessageFiles(today, remove);
                               });
    if (lockError) {
        return *lockError;
    }
    if (failure) {
        return *failure;
    }
    return copies;
}

platform::Result<std::shared_ptr<ExtensionMessage>> findMessage(const std::string& dataFolder,
                                                                const MessageKey& key) {
    std::shared_ptr<ExtensionMessage> found;
    const auto look = [&](const std::string& /*path*/, PropertyListDocument& document) {
        for (const PropertyListValue message : messagesOf(document)) {
            if (!found && isNamed(message, key)) {
                found = ExtensionMessage::initWithDictonary(message);
            }
        }
    };
    const auto lockError = platform::FileCoordinator(dataFolder)
                               .coordinateReading(todayOf(dataFolder), [&](const auto& today) {
                                   visitMessageFiles(today, look);
                               });
    if (lockError) {
        return *lockError;
    }
    return found;
}

}  // namespace quillet::host
