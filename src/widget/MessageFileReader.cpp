#include "widget/MessageFileReader.h"

#include <cerrno>

#include "platform/foundation/FileManager.h"
#include "platform/foundation/Log.h"

namespace quillet {

using platform::Log;
using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

void MessageFileReader::read(const std::string& path) {
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
