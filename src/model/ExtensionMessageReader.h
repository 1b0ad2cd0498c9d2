#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "model/CentralDateCache.h"
#include "model/ExtensionMessage.h"
#include "model/RecordBlock.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// Builds message records from property-list dictionaries. One reader serves one read of the store
// and remembers what its dictionaries have in common: the places of their keys, texts that records
// repeat, date texts. One thread.
class ExtensionMessageReader {
public:
    ExtensionMessageReader();
    // Writes date texts as seen at `now`, in seconds since 1970.
    explicit ExtensionMessageReader(double now);

    // Appends a record for each element of `data` to records(), in order. An element that is not a
    // message dictionary is logged and becomes an empty record. Raises platform::Exception when
    // `data` cannot be looped over.
    void readAll(const platform::PropertyListValue& data);

    // Everything that was read.
    const std::shared_ptr<RecordBlock>& records() const noexcept { return block_; }

    std::shared_ptr<ExtensionMessage> readOne(const platform::PropertyListValue& dictionary);

private:
    enum Key : std::size_t {
        kIdx,
        kAccIdx,
        kIconFetch,
        kFlip,
        kSubject,
        kMessageId,
        kFrom,
        kAccount,
        kFolder,
        kFolderStid,
        kIsUnread,
        kDate,
        kKeyCount,
    };

    // Texts that records often repeat, such as accounts: the last one of each length.
    class SharedTexts {
    public:
        RecordText in(RecordBlock& block, std::string_view view);

    private:
        std::array<RecordText, 16> texts_;
    };

    // A long text of a binary file, which many records may share: it is converted and stored once.
    struct LongText {
        RecordText text;
        std::optional<std::int64_t> integer;
        std::optional<float> real;
    };

    void fill(ExtensionMessage& message, const platform::PropertyListValue& dictionary);
    void fillNumbers(ExtensionMessage& message);
    void fillTexts(ExtensionMessage& message);
    void fillDate(ExtensionMessage& message);
    LongText* longTextOf(Key key) { return mayShareTexts_ ? findLongText(key) : nullptr; }
    LongText* findLongText(Key key);
    std::int64_t integerOf(Key key);
    float realOf(Key key);
    RecordText textOf(Key key, std::string_view fallback);
    RecordText textOf(Key key, SharedTexts& shared);

    platform::PropertyListKeys keys_;
    std::array<platform::PropertyListValue, kKeyCount> found_;
    std::string scratch_;
    std::string noSubject_;
    std::shared_ptr<RecordBlock> block_;
    CentralDateCache dates_;
    SharedTexts accounts_;
    SharedTexts senders_;
    SharedTexts folders_;
    bool mayShareTexts_ = false;  // whether the file has long texts
    // The long texts of one file by their objects. A hostile file cannot make a map slow.
    std::map<std::uint32_t, LongText> longTexts_;
};

}  // namespace quillet
