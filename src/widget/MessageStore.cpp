#include "widget/MessageStore.h"

#include <cerrno>
#include <utility>
#include <vector>

#include "model/ContainerPaths.h"
#include "model/RecordFields.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

using platform::Log;
using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

namespace {

std::vector<std::string> contentOf(const std::string& folder) {
    return ExtensionUtilities::directoryContent(folder).value_or(std::vector<std::string>());
}

}  // namespace

MessageStore::MessageStore(EnabledAccounts enabled) : enabled_(std::move(enabled)) {}

void MessageStore::read(const std::string& todayFolder) {
    ExtensionMessageReader messages;
    records_ = messages.records();
    try {
        readFolders(todayFolder, messages);
    } catch (const platform::Exception& exception) {
        Log::write("updateData exception %@", {exception.description()});
    }
}

void MessageStore::readFolders(const std::string& todayFolder, ExtensionMessageReader& messages) {
    for (const std::string& folder : contentOf(todayFolder)) {
        if (enabled_.contains(platform::Path::lastPathComponent(folder))) {
            for (const std::string& file : contentOf(folder)) {
                readFile(file, messages);
            }
        }
    }
}

// Raises platform::Exception when "data" cannot be looped over.
void MessageStore::readFile(const std::string& path, ExtensionMessageReader& messages) {
    const auto unread = platform::FileManager::readFile(
        path, document_.bytes(), PropertyListDocument::kMaximumFileSize);
    if (unread && unread->code == EFBIG) {
        Log::write("updateData error deserialize %@", {unread->description()});
    }
    if (unread) {
        return;
    }
    if (const auto error = document_.parse(PropertyListDocument::SharedBytes::Once)) {
        Log::write("updateData error deserialize %@", {error->description()});
        return;
    }
    const PropertyListValue root = document_.root();
    if (root.type() != PropertyListType::Dictionary) {
        Log::write("updateData error deserialize no dictionary in return");
        return;
    }
    const PropertyListValue data = root.valueForKey("data");
    if (!data || !root.valueForKey("folder") || !root.valueForKey("account")) {
        return;
    }
    if (data.count() > kMaximumRecords) {
        Log::write("updateData error deserialize %@", {"more messages than the limit"});
        return;
    }
    messages.readAll(data);
}

}  // namespace quillet
