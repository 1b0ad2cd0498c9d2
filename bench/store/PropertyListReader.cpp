#include "bench/store/PropertyListReader.h"

namespace quillet::test {

namespace {

using platform::PropertyListType;
using platform::PropertyListValue;

Value copyOfInteger(const PropertyListValue& value) {
    const platform::Number number = value.numberValue();
    if (number.kind() == platform::Number::Kind::Unsigned) {
        return number.unsignedIntegerValue();
    }
    return number.integerValue();
}

Value copyOfArray(const PropertyListValue& array) {
    Array elements;
    elements.reserve(array.count());
    for (const PropertyListValue element : array) {
        elements.push_back(copyOf(element));
    }
    return elements;
}

Value copyOfDictionary(const PropertyListValue& dictionary) {
    Dictionary entries;
    entries.reserve(dictionary.count());
    for (const auto& [key, value] : dictionary.entries()) {
        entries.emplace_back(key.stringValue(), copyOf(value));
    }
    return entries;
}

}  // namespace

Value copyOf(const PropertyListValue& value) {
    switch (value.type()) {
        case PropertyListType::String:
            return value.stringValue();
        case PropertyListType::Integer:
            return copyOfInteger(value);
        case PropertyListType::Real:
            return value.numberValue().doubleValue();
        case PropertyListType::Boolean:
            return value.boolValue();
        case PropertyListType::Date:
            return Date{value.dateValue()};
        case PropertyListType::Data:
            return Data{value.dataValue()};
        case PropertyListType::Uid:
            return Uid{value.uidValue()};
        case PropertyListType::Array:
            return copyOfArray(value);
        case PropertyListType::Dictionary:
            return copyOfDictionary(value);
        case PropertyListType::Absent:
            break;
    }
    return Null{};
}

}  // namespace quillet::test
