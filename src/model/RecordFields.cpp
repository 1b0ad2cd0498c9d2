#include "model/RecordFields.h"

#include "platform/base/TextFormat.h"
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

std::string recordDescription(std::string_view className, const std::optional<std::string>& text) {
    return platform::formatText("%@ %@", {className, text ? *text : platform::kAbsentText});
}

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
