#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/extension/Bundle.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// The text of `key` in a record's dictionary, or the localised text of `fallbackKey` when it is
// missing. Raises platform::Exception when the value is not a text or `dictionary` is not a
// dictionary.
inline std::string textField(const platform::PropertyListValue& dictionary,
                             std::string_view key,
                             std::string_view fallbackKey) {
    const platform::PropertyListValue value = dictionary.valueForKey(key);
    return value ? value.stringValue() : platform::Bundle::main().localizedString(fallbackKey);
}

// "ExtensionAccount " and the text that tells the record from others; "(null)" for none.
std::string recordDescription(std::string_view className, const std::optional<std::string>& text);

// A record of `dictionary`. A value of a wrong type is logged and leaves the record as far as
// `fill` has filled it.
template <typename Record>
std::shared_ptr<Record> filledRecord(std::string_view className,
                                     const platform::PropertyListValue& dictionary,
                                     void (Record::*fill)(const platform::PropertyListValue&)) {
    auto record = std::make_shared<Record>();
    try {
        ((*record).*fill)(dictionary);
    } catch (const platform::Exception& exception) {
        platform::Log::write("%@ initWithDictonary %@", {className, exception.description()});
    }
    return record;
}

// The most records that are read from a file: more cost too much time and memory, and no list shows
// so many.
inline constexpr std::size_t kMaximumRecords = 50'000;

// The list of dictionaries that a property-list file holds, as a value of `document`. Absent when
// the file cannot be read, holds something else or holds more than kMaximumRecords records; the
// elements of the lists under the key `nested` count too.
platform::PropertyListValue arrayWithContentsOfFile(const std::string& path,
                                                    platform::PropertyListDocument& document,
                                                    std::string_view nested = {});

// One record for each element of `list`, in order; no record when the list is absent. Raises
// platform::Exception when the value cannot be looped over.
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
