#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "model/CentralDateCache.h"
#include "model/ExtensionMessage.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

class RecordBlock;

// Builds message records from property-list dictionaries. One reader serves one read of the store
// and keeps what its dictionaries have in common: where their keys stand, the texts of the last
// record, the date texts. One thread.
class ExtensionMessageReader {
public:
    ExtensionMessageReader();

    // Appends a record for each element of `data` to `messages`, in order. An element that is no
    // message dictionary is logged and gives an empty record. Raises platform::Exception when
    // `data` is nothing that can be looped over.
    void readAll(const platform::PropertyListValue& data,
                 std::vector<std::shared_ptr<ExtensionMessage>>& messages);

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

    // A text that records often share.
    struct SharedText {
        RecordText text;
        RecordText in(RecordBlock& block, std::string_view view);
    };

    void fill(ExtensionMessage& message, const platform::PropertyListValue& dictionary);
    void fillNumbers(ExtensionMessage& message);
    void fillTexts(ExtensionMessage& message);
    void fillDate(ExtensionMessage& message);
    std::string_view textOf(Key key, std::string_view fallback);

    platform::PropertyListKeys keys_;
    std::array<platform::PropertyListValue, kKeyCount> found_;
    std::string scratch_;
    std::string noSubject_;
    CentralDateCache dates_;
    std::shared_ptr<RecordBlock> block_;
    SharedText lastAccount_;
    SharedText lastFrom_;
    SharedText lastFolder_;
    SharedText lastDate_;
};

}  // namespace quillet
