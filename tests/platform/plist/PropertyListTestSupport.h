#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/plist/PropertyList.h"

namespace quillet::test {

// Everything in a value as one text: "abc" for strings, 5 for integers, 1.5r for reals, true,
// 10d for dates, <ab> for data, uid3, (null), [..] and {"key":value,..}.
inline std::string dump(const platform::PropertyListValue& value) {
    using Type = platform::PropertyListType;
    switch (value.type()) {
        case Type::Absent:
            return "(null)";
        case Type::String:
            return '"' + value.stringValue() + '"';
        case Type::Integer:
            return value.numberValue().text();
        case Type::Real:
            return value.numberValue().text() + 'r';
        case Type::Boolean:
            return value.boolValue() ? "true" : "false";
        case Type::Date:
            return platform::Number(value.dateValue()).text() + 'd';
        case Type::Data:
            return '<' + std::string(value.dataValue()) + '>';
        case Type::Uid:
            return "uid" + std::to_string(value.uidValue());
        default:
            break;
    }
    const bool isDictionary = value.type() == Type::Dictionary;
    std::string text;
    for (const auto element : value) {
        text += (text.empty() ? "" : ",") + dump(element) +
                (isDictionary ? ':' + dump(value.valueForKey(element.stringValue())) : "");
    }
    return isDictionary ? '{' + text + '}' : '[' + text + ']';
}

// The contents of the file, or the description of its error.
inline std::string parsed(std::string_view file) {
    platform::PropertyListDocument document;
    const auto error = document.parse(file);
    return error ? error->description() : dump(document.root());
}

// The kind of the file's error, or none for a good file.
inline std::optional<platform::PropertyListErrorKind> kindOfError(std::string_view file) {
    const auto error = platform::PropertyListDocument().parse(file);
    return error ? std::optional(error->kind) : std::nullopt;
}

// Big-endian bytes of a number.
inline std::string bigEndian(std::uint64_t number, std::size_t width) {
    std::string bytes;
    for (std::size_t left = width; left > 0; --left) {
        bytes += static_cast<char>(number >> (8 * (left - 1)));
    }
    return bytes;
}

// A short ASCII text of the binary format.
inline std::string ascii(std::string_view text) {
    return static_cast<char>(0x50 + text.size()) + std::string(text);
}

// The end of a binary file, whose first object is the root.
inline std::string trailer(std::uint64_t objects,
                           std::uint64_t tableOffset,
                           std::size_t referenceWidth = 1,
                           std::size_t offsetWidth = 1) {
    return bigEndian(offsetWidth, 7) + bigEndian(referenceWidth, 1) + bigEndian(objects, 8) +
           bigEndian(0, 8) + bigEndian(tableOffset, 8);
}

// A binary property list of the given encoded objects, whose first one is the root.
inline std::string binaryFile(const std::vector<std::string>& objects,
                              std::size_t referenceWidth = 1,
                              std::size_t offsetWidth = 1) {
    std::string file = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += bigEndian(file.size(), offsetWidth);
        file += object;
    }
    return file + table + trailer(objects.size(), file.size(), referenceWidth, offsetWidth);
}

}  // namespace quillet::test
