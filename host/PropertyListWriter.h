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

class Value;
struct Entry;
using Array = std::vector<Value>;
// Entries are written in the order in which they stand.
using Dictionary = std::vector<Entry>;

// One value of a property list. Texts are UTF-8; what is not becomes U+FFFD when written.
class Value {
public:
    using Content =
        std::variant<std::string, std::int64_t, double, bool, Date, Data, Array, Dictionary>;

    // Implicit, so that a tree reads as a literal.
    Value(std::string text) : content_(std::move(text)) {}           // NOLINT(google-explicit-*)
    Value(std::string_view text) : content_(std::string(text)) {}    // NOLINT(google-explicit-*)
    Value(const char* text) : content_(std::string(text)) {}         // NOLINT(google-explicit-*)
    Value(double real) : content_(real) {}                           // NOLINT(google-explicit-*)
    Value(Date date) : content_(date) {}                             // NOLINT(google-explicit-*)
    Value(Data data) : content_(std::move(data)) {}                  // NOLINT(google-explicit-*)
    Value(Array elements) : content_(std::move(elements)) {}         // NOLINT(google-explicit-*)
    Value(Dictionary entries);                                       // NOLINT(google-explicit-*)
    Value(std::same_as<bool> auto truth) : content_(bool{truth}) {}  // NOLINT(google-explicit-*)
    Value(std::integral auto number)                                 // NOLINT(google-explicit-*)
        requires(!std::same_as<decltype(number), bool>)
        : content_(static_cast<std::int64_t>(number)) {}

    const Content& content() const { return content_; }

private:
    Content content_;
};

struct Entry {
    std::string key;
    Value value;
};

inline Value::Value(Dictionary entries) : content_(std::move(entries)) {}

enum class PropertyListFormat { Xml, Binary };

// The bytes of a file that holds `root`. Takes time in proportion to the size of the tree.
//
// In XML a character that the format cannot hold becomes U+FFFD and a date loses its fraction of
// a second. The binary format holds equal leaves (texts, keys included, numbers, dates, data) once.
std::string writePropertyList(const Value& root, PropertyListFormat format);

}  // namespace quillet::host
