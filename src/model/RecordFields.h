#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/Bundle.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// The text of `key` in a record's dictionary; where it is missing, the localised text of
// `fallbackKey`. Raises platform::Exception when the value is no text or `dictionary` no
// dictionary.
inline std::string textField(const platform::PropertyListValue& dictionary,
                             std::string_view key,
                             std::string_view fallbackKey) {
    const platform::PropertyListValue value = dictionary.valueForKey(key);
    return value ? value.stringValue() : platform::Bundle::main().localizedString(fallbackKey);
}

// The list that a property-list file holds, a value of `document`; absent where the file cannot be
// read or holds something else.
inline platform::PropertyListValue arrayWithContentsOfFile(
    const std::string& path, platform::PropertyListDocument& document) {
    using platform::PropertyListDocument;
    if (platform::FileManager::readFile(
            path, document.bytes(), PropertyListDocument::kMaximumFileSize) ||
        document.parse() || document.root().type() != platform::PropertyListType::Array) {
        return {};
    }
    return document.root();
}

// One record for each element of `list`, in order; none for an absent list. Raises
// platform::Exception for a value that cannot be looped over.
template <typename Record>
std::vector<std::shared_ptr<Record>> recordsOf(const platform::PropertyListValue& list) {
    std::vector<std::shared_ptr<Record>> records;
    if (list) {
        for (const platform::PropertyListValue& element : list) {
            records.push_back(Record::initWithDictonary(element));
        }
    }
    return records;
}

}  // namespace quillet
