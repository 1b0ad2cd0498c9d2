#include "platform/plist/PropertyListWriter.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>
#include <unicode/unistr.h>
#include <unordered_map>

#include "platform/base/Ascii.h"

namespace quillet::platform {
namespace {

using namespace PropertyListTree;

// High halves of an object's first byte; the low half is a count or a power of two.
enum Marker : unsigned {
    kBoolean = 0x00,
    kInteger = 0x10,
    kReal = 0x20,
    kDate = 0x30,
    kData = 0x40,
    kAsciiText = 0x50,
    kUtf16Text = 0x60,
    kUid = 0x80,
    kArray = 0xA0,
    kDictionary = 0xD0,
};

constexpr unsigned kCountFollows = 0xF;

void appendByte(std::string& out, std::uint64_t byte) {
    out += static_cast<char>(static_cast<unsigned char>(byte & 0xFFU));
}

void appendBigEndian(std::string& out, std::uint64_t number, unsigned width) {
    for (unsigned shift = 8 * width; shift > 0; shift -= 8) {
        appendByte(out, number >> (shift - 8));
    }
}

// Bytes that hold every number up to `largest`: 1, 2, 4 or 8.
unsigned widthFor(std::uint64_t largest) {
    constexpr std::uint64_t kByte = 0xFF;
    constexpr std::uint64_t kTwoBytes = 0xFFFF;
    constexpr std::uint64_t kFourBytes = 0xFFFFFFFF;
    return largest <= kByte ? 1 : largest <= kTwoBytes ? 2 : largest <= kFourBytes ? 4 : 8;
}

void appendInteger(std::string& out, std::uint64_t number) {
    const unsigned width = widthFor(number);  // a negative number is large here: 8 bytes
    appendByte(out, kInteger | static_cast<unsigned>(std::countr_zero(width)));
    appendBigEndian(out, number, width);
}

void appendMarker(std::string& out, Marker marker, std::size_t count) {
    appendByte(out, marker | std::min<std::size_t>(count, kCountFollows));
    if (count >= kCountFollows) {
        appendInteger(out, count);
    }
}

std::string eightBytes(Marker marker, double number) {
    std::string out;
    appendByte(out, marker | 3U);  // two to the third power bytes
    appendBigEndian(out, std::bit_cast<std::uint64_t>(number), 8);
    return out;
}

// The bytes of an object that holds no other.
struct LeafEncoder {
    std::string operator()(const std::string& text) const {
        std::string out;
        if (isAsciiText(text)) {
            appendMarker(out, kAsciiText, text.size());
            return out += text;
        }
        const auto units = icu::UnicodeString::fromUTF8(text);
        appendMarker(out, kUtf16Text, static_cast<std::size_t>(units.length()));
        for (std::int32_t index = 0; index < units.length(); ++index) {
            appendBigEndian(out, units.charAt(index), 2);
        }
        return out;
    }

    std::string operator()(std::int64_t number) const {
        std::string out;
        appendInteger(out, static_cast<std::uint64_t>(number));
        return out;
    }

    // Above the signed range, which eight bytes hold alone.
    std::string operator()(std::uint64_t number) const {
        std::string out;
        appendByte(out, kInteger | 4U);  // two to the fourth power bytes
        appendBigEndian(out, 0, 8);
        appendBigEndian(out, number, 8);
        return out;
    }

    std::string operator()(const Uid& uid) const {
        const unsigned width = widthFor(uid.number);
        std::string out;
        appendByte(out, kUid | (width - 1));
        appendBigEndian(out, uid.number, width);
        return out;
    }

    std::string operator()(Null /*null*/) const {
        std::string out;
        appendByte(out, 0);
        return out;
    }

    std::string operator()(bool truth) const {
        std::string out;
        appendByte(out, kBoolean | (truth ? 9U : 8U));
        return out;
    }

    std::string operator()(const Data& data) const {
        std::string out;
        appendMarker(out, kData, data.bytes.size());
        return out += data.bytes;
    }

    std::string operator()(double real) const { return eightBytes(kReal, real); }
    std::string operator()(const Date& date) const { return eightBytes(kDate, date.seconds); }
};

// Gives each object its number, the root first, then writes them: how wide a reference is, is
// known only when all are counted.
class Writer {
public:
    std::string write(const Value& root) {
        collect(root);
        const unsigned referenceWidth = widthFor(objects_.size());
        std::string out = "bplist00";
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (const Object& object : objects_) {
            offsets.push_back(out.size());
            appendObject(out, object, referenceWidth);
        }
        const std::size_t table = out.size();
        const unsigned offsetWidth = widthFor(table);
        for (const std::size_t offset : offsets) {
            appendBigEndian(out, offset, offsetWidth);
        }
        appendBigEndian(out, 0, 6);
        appendByte(out, offsetWidth);
        appendByte(out, referenceWidth);
        appendBigEndian(out, objects_.size(), 8);
        appendBigEndian(out, 0, 8);  // the root's number
        appendBigEndian(out, table, 8);
        return out;
    }

private:
    using Number = std::uint32_t;

    struct Object {
        std::string_view leaf;       // its bytes, which lie in leaves_; empty in a container
        Marker marker;               // of a container
        std::size_t count;           // elements or entries
        std::size_t firstReference;  // in references_; a dictionary's keys, then its values
    };

    Number add(const Object& object) {
        objects_.push_back(object);
        return static_cast<Number>(objects_.size() - 1);
    }

    Number collect(const Value& value) {
        if (const auto* elements = std::get_if<Array>(&value.content())) {
            return collectArray(*elements);
        }
        if (const auto* entries = std::get_if<Dictionary>(&value.content())) {
            return collectDictionary(*entries);
        }
        return std::visit(
            [this](const auto& content) -> Number {
                if constexpr (requires { LeafEncoder{}(content); }) {
                    return collectLeaf(LeafEncoder{}(content));
                }
                return 0;  // containers were handled above
            },
            value.content());
    }

    Number collectLeaf(std::string bytes) {
        const auto [place, isNew] = leaves_.try_emplace(std::move(bytes), Number{});
        if (isNew) {
            place->second = add({place->first, kBoolean, 0, 0});
        }
        return place->second;
    }

    Number collectArray(const Array& elements) {
        std::size_t reference = references_.size();
        references_.resize(reference + elements.size());
        const Number number = add({{}, kArray, elements.size(), reference});
        for (const Value& element : elements) {
            const Number child = collect(element);
            references_[reference++] = child;
        }
        return number;
    }

    Number collectDictionary(const Dictionary& entries) {
        std::size_t reference = references_.size();
        references_.resize(reference + 2 * entries.size());
        const Number number = add({{}, kDictionary, entries.size(), reference});
        for (const auto& [key, value] : entries) {
            const Number keyNumber = collectLeaf(LeafEncoder{}(key));
            const Number valueNumber = collect(value);
            references_[reference] = keyNumber;
            references_[reference + entries.size()] = valueNumber;
            ++reference;
        }
        return number;
    }

    void appendObject(std::string& out, const Object& object, unsigned referenceWidth) const {
        if (!object.leaf.empty()) {
            out += object.leaf;
            return;
        }
        appendMarker(out, object.marker, object.count);
        const std::size_t references = object.count * (object.marker == kDictionary ? 2 : 1);
        for (std::size_t index = 0; index < references; ++index) {
            appendBigEndian(out, references_[object.firstReference + index], referenceWidth);
        }
    }

    std::vector<Object> objects_;
    std::vector<Number> references_;
    std::unordered_map<std::string, Number> leaves_;  // bytes of a leaf to its number
};

}  // namespace

std::string writeBinaryPropertyList(const Value& root) {
    return Writer().write(root);
}

}  // namespace quillet::platform
