#pragma once

#include <memory>
#include <string>

#include "model/ExtensionMessageReader.h"
#include "model/RecordBlock.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// Reads message files, one after the other, into one block of records. A file that cannot be read
// is skipped, with a log line where it holds something else than it should. One thread.
class MessageFileReader {
public:
    // Tells the dates as seen at `now`, in seconds since 1970.
    explicit MessageFileReader(double now) : reader_(now) {}

    // Raises platform::Exception where "data" is nothing that can be looped over.
    void read(const std::string& path);

    // What was read, in the order of reading.
    const std::shared_ptr<RecordBlock>& records() const noexcept { return reader_.records(); }

private:
    platform::PropertyListDocument document_;  // one for all files: its storage is reused
    ExtensionMessageReader reader_;
};

}  // namespace quillet
