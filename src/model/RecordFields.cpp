#include "model/RecordFields.h"

#include "platform/files/FileManager.h"

namespace quillet {

using platform::PropertyListDocument;
using platform::PropertyListType;
using platform::PropertyListValue;

namespace {

bool hasTooManyRecords(const PropertyListValue& list, std::string_view nested) {
    std::size_t records = list.count();
    for (const PropertyListValue& element : list) {
        if (records > kMaximumRecords) {
            return true;
        }
        if (!nested.empty() && element.type() == PropertyListType::Dictionary) {
            records += element.valueForKey(nested).count();
        }
    }
    return records > kMaximumRecords;
}

}  // namespace

PropertyListValue arrayWithContentsOfFile(const std::string& path,
                                          PropertyListDocument& document,
                                          std::string_view nested) {
    if (platform::FileManager::readFile(
            path, document.bytes(), PropertyListDocument::kMaximumFileSize) ||
        document.parse() || document.root().type() != PropertyListType::Array ||
        hasTooManyRecords(document.root(), nested)) {
        return {};
    }
    return document.root();
}

}  // namespace quillet
