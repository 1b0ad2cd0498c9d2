#include "widget/MessageStore.h"

#include <cerrno>
#include <optional>

#include "platform/foundation/Exception.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Path.h"
#include "widget/TodayViewController.h"

namespace quillet {

using platform::Log;
using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

MessageStore::MessageStore(EnabledAccounts enabled) : enabled_(std::move(enabled)) {}

void MessageStore::read(const std::string& todayFolder) {
    try {
        readFolders(todayFolder);
    } catch (const platform::Exception& exception) {
        Log::write("updateData exception %@", {exception.description()});
    }
}

void MessageStore::readFolders(const std::string& todayFolder) {
    const auto folders = TodayViewController::directoryContent(todayFolder);
    if (!folders) {
        return;
    }
    for (const std::string& folder : *folders) {
        if (!enabled_.contains(platform::Path::lastPathComponent(folder))) {
            continue;
        }
        if (const auto files = TodayViewController::directoryContent(folder)) {
            for (const std::string& file : *files) {
                readFile(file);
            }
        }
    }
}

void MessageStore::readFile(const std::string& path) {
    const auto unread = platform::FileManager::readFile(
        path, document_.bytes(), PropertyListDocument::kMaximumFileSize);
    if (unread && unread->code == EFBIG) {
        Log::write("updateData error deserialize %@", {unread->description()});
    }
    if (unread || document_.bytes().size() == 0) {
        return;
    }
    if (const auto error = document_.parse()) {
        Log::write("updateData error deserialize %@", {error->description()});
        return;
    }
    const PropertyListValue root = document_.root();
    if (root.type() != PropertyListType::Dictionary) {
        Log::write("updateData error deserialize no dictionary in return");
        return;
    }
    const PropertyListValue data = root.valueForKey("data");
    if (data && root.valueForKey("folder") && root.valueForKey("account")) {
        reader_.readAll(data);
    }
}

}  // namespace quillet
