#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace quillet::platform {

// A property list as a program makes it: a tree of values. Any thread.
namespace PropertyListTree {

struct Date {
    double seconds = 0;  // since 2001-01-01 00:00:00 UTC
};

struct Data {
    std::string bytes;
};

// Only the binary format has these two.
struct Uid {
    std::uint64_t number = 0;
};
struct Null {};

class Value;
using Entry = std::pair<std::string, Value>;  // key and value
using Array = std::vector<Value>;
using Dictionary = std::vector<Entry>;  // written in this order

// One value of a property list. Texts are UTF-8; what is not becomes U+FFFD when written.
class Value {
public:
    // An integer is unsigned only where no signed one can hold it.
    using Content = std::variant<std::string,
                                 std::int64_t,
                                 std::uint64_t,
                                 double,
                                 bool,
                                 Date,
                                 Data,
                                 Uid,
                                 Null,
                                 Array,
                                 Dictionary>;

    // Implicit, so that a tree reads as a literal.
    Value(std::string text) : content_(std::move(text)) {}
    Value(std::string_view text) : content_(std::string(text)) {}
    Value(const char* text) : content_(std::string(text)) {}
    Value(double real) : content_(real) {}
    Value(Date date) : content_(date) {}
    Value(Data data) : content_(std::move(data)) {}
    Value(Uid uid) : content_(uid) {}
    Value(Null null) : content_(null) {}
    Value(Array elements) : content_(std::move(elements)) {}
    Value(Dictionary entries) : content_(std::move(entries)) {}
    Value(std::same_as<bool> auto truth) : content_(bool{truth}) {}
    Value(std::integral auto number) requires(!std::same_as<decltype(number), bool>)
        : content_(static_cast<std::int64_t>(number)) {
        if (!std::in_range<std::int64_t>(number)) {
            content_ = static_cast<std::uint64_t>(number);
        }
    }

    const Content& content() const { return content_; }
    Content& content() { return content_; }

private:
    Content content_;
};

}  // namespace PropertyListTree

// The bytes of a binary property list (version "00") that holds `root`. Equal leaves (texts, keys
// included, numbers, dates, data) are held once. Takes time in proportion to the size of the tree.
// Any thread.
std::string writeBinaryPropertyList(const PropertyListTree::Value& root);

}  // namespace quillet::platform
