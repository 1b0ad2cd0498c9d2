#include "platform/plist/PropertyList.h"

#include <atomic>
#include <bit>
#include <string>
#include <utility>

#include "platform/base/Ascii.h"
#include "platform/base/Utf8.h"
#include "platform/plist/PropertyListState.h"
#include "platform/plist/PropertyListXmlText.h"

namespace quillet::platform {

namespace {

using Kind = PropertyListErrorKind;

constexpr std::string_view kBinaryStart = "bplist";
constexpr std::string_view kUtf16BigStart = "\xFE\xFF";
constexpr std::string_view kUtf16LittleStart = "\xFF\xFE";
constexpr std::size_t kUtf16MarkLength = 2;

// The offset in the UTF-16 file of the character at `offset` of its UTF-8 form.
std::size_t utf16Offset(std::string_view utf8, std::size_t offset) {
    std::size_t units = 0;
    for (const char character : utf8.substr(0, offset)) {
        const auto byte = static_cast<unsigned char>(character);
        units += (byte & 0xC0U) == 0x80 ? 0 : byte >= 0xF0 ? 2 : 1;
    }
    return kUtf16MarkLength + 2 * units;
}

void readUtf16Xml(PropertyListState& state, std::endian order) {
    const std::string_view bytes = state.bytes.view();
    if (bytes.size() % 2 != 0) {
        failPropertyList(PropertyListErrorKind::InvalidText,
                         bytes.size() - 1,
                         "half a character at the end of UTF-16 text");
    }
    state.transcoded.clear();
    appendUtf16AsUtf8(bytes.substr(kUtf16MarkLength), order, state.transcoded);
    const std::size_t size = state.transcoded.size();
    state.transcoded.append(ByteBuffer::kPadding, '\0');
    state.text = state.transcoded.data();
    try {
        readXmlPropertyList(state, size);
    } catch (PropertyListFailure& failure) {
        failure.error.offset = utf16Offset(state.transcoded, failure.error.offset);
        throw;
    }
}

void read(PropertyListState& state) {
    const std::string_view bytes = state.bytes.view();
    if (bytes.empty()) {
        failPropertyList(Kind::Empty, 0, "an empty file");
    }
    if (bytes.size() > PropertyListDocument::kMaximumFileSize) {
        failPropertyList(
            Kind::TooLarge, PropertyListDocument::kMaximumFileSize, "a file too large");
    }
    state.text = bytes.data();
    state.referenceWidth = 0;
    if (bytes.starts_with(kBinaryStart)) {
        readBinaryPropertyList(state);
        return;
    }
    if (bytes.starts_with(kUtf16BigStart)) {
        readUtf16Xml(state, std::endian::big);
        return;
    }
    if (bytes.starts_with(kUtf16LittleStart)) {
        readUtf16Xml(state, std::endian::little);
        return;
    }
    const bool marked = bytes.starts_with(kUtf8ByteOrderMark);
    const std::string_view text = marked ? bytes.substr(kUtf8ByteOrderMark.size()) : bytes;
    if (!trimmedStart(text, kXmlSpaces).starts_with('<')) {
        failPropertyList(Kind::UnknownFormat, 0, "neither an XML nor a binary property list");
    }
    readXmlPropertyList(state, bytes.size());
}

}  // namespace

std::string PropertyListError::description() const {
    return text + " at byte " + std::to_string(offset);
}

PropertyListDocument::PropertyListDocument() : state_(std::make_unique<PropertyListState>()) {}
PropertyListDocument::~PropertyListDocument() = default;
PropertyListDocument::PropertyListDocument(PropertyListDocument&&) noexcept = default;
PropertyListDocument& PropertyListDocument::operator=(PropertyListDocument&&) noexcept = default;

ByteBuffer& PropertyListDocument::bytes() noexcept {
    return state_->bytes;
}

std::optional<PropertyListError> PropertyListDocument::parse(SharedBytes counted) {
    static std::atomic<std::uint64_t> generations{0};
    state_->generation = ++generations;
    state_->sharedBytes = counted;
    state_->longestText = 0;
    state_->hasRoot = false;
    state_->nodes.clear();
    try {
        read(*state_);
    } catch (PropertyListFailure& failure) {
        return std::move(failure.error);
    }
    state_->hasRoot = true;
    return std::nullopt;
}

std::optional<PropertyListError> PropertyListDocument::parse(std::string_view bytes) {
    state_->bytes.assign(bytes);
    return parse();
}

PropertyListValue PropertyListDocument::root() const noexcept {
    return state_->hasRoot ? PropertyListValue(state_.get(), state_->root) : PropertyListValue();
}

}  // namespace quillet::platform
