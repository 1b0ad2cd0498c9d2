#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/ByteBuffer.h"
#include "platform/plist/Number.h"

namespace quillet::platform {

struct PropertyListNode;
struct PropertyListState;

enum class PropertyListType : std::uint8_t {
    Absent,
    String,
    Integer,
    Real,
    Boolean,
    Date,
    Data,
    Array,
    Dictionary,
    Uid,
};

enum class PropertyListErrorKind : std::uint8_t {
    Empty,          // no bytes at all
    TooLarge,       // more bytes than kMaximumFileSize
    UnknownFormat,  // the first bytes are neither of XML nor of the binary format
    Malformed,      // not well-formed in its format
    InvalidText,    // a text that is not valid UTF-8
    TooDeep,        // nested deeper than kMaximumDepth
    TooComplex,     // more values than kMaximumValues, or shared ones that unfold beyond the budget
    Cyclic,         // a container that contains itself
    EntityDeclared,  // an internal document type subset that declares entities
};

struct PropertyListError {
    PropertyListErrorKind kind = PropertyListErrorKind::Malformed;
    std::size_t offset = 0;  // bytes from the start of the file
    std::string text;        // what was expected or found

    // "text at byte offset", for log lines.
    std::string description() const;
};

// One value of a document: a handle of two words, valid until its document is parsed again or
// destroyed. A default-constructed value is absent. Any thread may read the values of a document
// while nobody parses it.
//
// A conversion raises platform::Exception if the value does not have it.
class PropertyListValue {
public:
    PropertyListValue() = default;

    PropertyListType type() const noexcept;
    explicit operator bool() const noexcept { return state_ != nullptr; }

    // The text of a string. The view points into the document or, if the text had to be unescaped
    // or converted, into `scratch`. Raises for other types.
    std::string_view stringValue(std::string& scratch) const;
    std::string stringValue() const;

    // Conversions of numbers, booleans and strings, see Number. Dates, data and containers raise.
    std::uint64_t unsignedIntegerValue() const;  // raises for strings, too
    std::int64_t integerValue() const;
    float floatValue() const;
    bool boolValue() const;

    // The number object of an integer, real or boolean, of the same kind. Raises for other types.
    Number numberValue() const;

    // The object number of a string of at least `size` bytes in a binary file, where many places
    // may share one object; none for every other value. Equal numbers mean equal texts, so a reader
    // of many values need not compare long texts.
    std::optional<std::uint32_t> sharedText(std::size_t size) const noexcept;
    // Whether this value's file may have values with a sharedText.
    bool mayShareTexts(std::size_t size) const noexcept;

    // Seconds since 2001-01-01 00:00:00 UTC. Raises for other types than dates.
    double dateValue() const;
    // The bytes of data. Raises for other types.
    std::string dataValue() const;
    std::uint64_t uidValue() const;

    // The number of elements of an array or entries of a dictionary (with repeated keys); 0 for
    // everything else.
    std::size_t count() const noexcept;

    // The value of `key`; absent when the dictionary has no such key. Raises for other types.
    PropertyListValue valueForKey(std::string_view key) const;

    // A loop over the value visits an array's elements or a dictionary's keys (strings), each key
    // once. Raises for other types.
    class Iterator;
    Iterator begin() const;
    Iterator end() const;

    // The entries of a dictionary, each key once: at the place of its first occurrence in the file,
    // with the value of the last one. Raises for other types.
    using Entry = std::pair<PropertyListValue, PropertyListValue>;
    std::vector<Entry> entries() const;

private:
    friend class PropertyListDocument;
    friend class PropertyListKeys;

    PropertyListValue(const PropertyListState* state, std::uint32_t node) noexcept;

    const PropertyListNode& node() const noexcept;
    const PropertyListNode& nodeOfType(PropertyListType wanted, const char* conversion) const;
    Number number(const char* conversion) const;
    [[noreturn]] void raise(const char* conversion) const;
    static void mergeRepeatedKeys(std::vector<Entry>& entries);

    const PropertyListState* state_ = nullptr;
    std::uint32_t node_ = 0;
};

// A place in a loop over an array's elements or a dictionary's keys.
class PropertyListValue::Iterator {
public:
    using value_type = PropertyListValue;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;

    PropertyListValue operator*() const noexcept;
    Iterator& operator++() noexcept;
    Iterator operator++(int) noexcept {
        Iterator old = *this;
        ++*this;
        return old;
    }
    friend bool operator==(const Iterator& left, const Iterator& right) noexcept {
        return left.remaining_ == right.remaining_;
    }

private:
    friend class PropertyListValue;

    const PropertyListState* state_ = nullptr;
    std::shared_ptr<const std::vector<PropertyListValue>> keys_;  // of a dictionary
    std::uint32_t at_ = 0;         // XML: the node; binary: the offset of its reference
    std::uint32_t remaining_ = 0;  // elements left
};

// A property list in the XML or the binary format, which its first bytes tell apart. A document
// owns the bytes of one file and can be filled again, which keeps its storage: fill bytes(), then
// call parse().
//
// parse() checks the whole file, so reading values needs no further checks, and a walk over the
// values never takes more steps than the file has visits or more than kMaximumDepth levels. One
// thread at a time may parse.
class PropertyListDocument {
public:
    static constexpr std::size_t kMaximumFileSize = std::size_t{64} * 1024 * 1024;  // bytes
    static constexpr std::size_t kMaximumValues = std::size_t{4} * 1024 * 1024;     // with keys
    static constexpr std::size_t kMaximumDepth = 512;                               // levels
    // Shared objects of the binary format count at each reference. A file of n bytes may unfold to
    // kVisitsBase + n visits: one for each value, kVisitsPerElement more for each element of an
    // array, one more for every 16 bytes of a key, text or data. In a file larger than the base an
    // element that is not shared takes as many bytes as visits, so only shared ones meet the limit.
    static constexpr std::size_t kVisitsBase = 65536;
    static constexpr std::size_t kVisitsPerElement = 5;

    // How the bytes of a shared text or data are counted. Those longer than kMaximumSharedBytes
    // always count at each place, since even comparing them takes long.
    enum class SharedBytes {
        AtEachPlace,  // for readers that copy the text at each place
        Once,         // for readers that recognise a shared text, see sharedText()
    };
    static constexpr std::size_t kMaximumSharedBytes = 65536;

    PropertyListDocument();
    ~PropertyListDocument();
    PropertyListDocument(PropertyListDocument&& other) noexcept;
    PropertyListDocument& operator=(PropertyListDocument&& other) noexcept;

    ByteBuffer& bytes() noexcept;

    // Decodes bytes(). On an error the document has no root.
    std::optional<PropertyListError> parse(SharedBytes counted = SharedBytes::AtEachPlace);
    std::optional<PropertyListError> parse(std::string_view bytes);  // fills bytes() first

    // Absent before a successful parse.
    PropertyListValue root() const noexcept;

private:
    std::unique_ptr<PropertyListState> state_;
};

// Looks up a fixed set of keys in one dictionary after another. Remembers the positions of the keys
// in the last dictionary, so dictionaries of one shape cost about one comparison a key.
class PropertyListKeys {
public:
    static constexpr std::size_t kMaximumKeys = 32;

    // The key texts must outlive the object (literals).
    explicit PropertyListKeys(std::span<const std::string_view> keys);

    // Fills found[i] with the value of keys[i], or an absent value; `found` has one element for
    // each key. Raises as valueForKey does, and then all of `found` is absent.
    void find(const PropertyListValue& dictionary, std::span<PropertyListValue> found);

private:
    // A kind of dictionaries in one document: all have the same keys at the same positions.
    struct Shape {
        std::uint64_t generation = 0;  // of the document
        std::uint32_t length = 0;
        std::uint32_t shape = 0;  // XML; 0 for none
        std::uint32_t keys = 0;   // binary: the offset of the references to the keys

        bool holds(const PropertyListState& state, const PropertyListNode& dictionary) const;
    };

    std::uint32_t keyAt(std::uint32_t position, std::string_view key);
    void search(const PropertyListValue& dictionary, std::span<PropertyListValue> found);
    void repeat(const PropertyListValue& dictionary, std::span<PropertyListValue> found) const;

    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    std::vector<std::string_view> keys_;
    std::size_t longestKey_ = 0;            // bytes
    std::vector<std::uint32_t> positions_;  // of each key in the last dictionary, or kNone
    std::vector<std::uint32_t> expected_;   // the key at each position there, or kNone
    std::string scratch_;
    Shape last_;
};

}  // namespace quillet::platform
