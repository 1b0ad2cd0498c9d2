#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/extension/Bundle.h"
#include "platform/plist/PropertyList.h"

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

// Records of a file. More cost too much time and memory, and no list shows so many.
inline constexpr std::size_t kMaximumRecords = 50'000;

// The list of dictionaries that a property-list file holds, a value of `document`; absent where the
// file cannot be read, holds something else or more than kMaximumRecords records: its elements and
// those of the lists that they have for `nested`.
platform::PropertyListValue arrayWithContentsOfFile(const std::string& path,
                                                    platform::PropertyListDocument& document,
                                                    std::string_view nested = {});

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
