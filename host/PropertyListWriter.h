#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

// Property lists as a host application makes them: a tree of values and writers for both formats.
// Any thread.
namespace quillet::host {

struct Date {
    double seconds = 0;  // since 2001-01-01 00:00:00 UTC
};

struct Data {
    std::string bytes;
};

// Only the binary format has these two; files that are written back keep them.
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

enum class PropertyListFormat { Xml, Binary };

// The bytes of a file that holds `root`. Takes time in proportion to the size of the tree.
//
// In XML a character that the format cannot hold becomes U+FFFD, a date loses its fraction of a
// second, a UID becomes the dictionary that stands for it there and a null the empty text. The
// binary format holds equal leaves (texts, keys included, numbers, dates, data) once.
std::string writePropertyList(const Value& root, PropertyListFormat format);

}  // namespace quillet::host
