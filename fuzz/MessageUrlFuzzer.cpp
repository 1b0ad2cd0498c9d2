// Reads a text as the URL of a draft. Writing the draft and reading it again must change nothing.

#include <any>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Require.h"
#include "handoff/MessageUrl.h"
#include "platform/base/Exception.h"

namespace quillet::fuzz {

namespace {

using platform::URL;

// The fields that are read as they were written. An empty field is not written.
std::vector<std::string> fieldsOf(const ExtensionMessage& message) {
    std::vector<std::string> fields;
    for (const ExtensionMessage::Text& text : {message.plainBody(),
                                               message.htmlBody(),
                                               message.subject(),
                                               message.from(),
                                               message.account()}) {
        fields.push_back(text.value_or(""));
    }
    const ExtensionMessage::Attachments attachments = message.attachments().value();
    for (const std::any& attachment : attachments) {
        fields.push_back(std::any_cast<std::string>(attachment));
    }
    return fields;
}

void readAndWrite(std::string_view text) {
    const std::optional<URL> url = URL::URLWithString(text);
    if (!url) {
        return;
    }
    std::shared_ptr<ExtensionMessage> message;
    try {
        message = ExtensionMessageWithUrl(*url);
    } catch (const platform::Exception&) {
        return;
    }
    const std::optional<URL> written = queryUrl(*message, "compose");
    require(written.has_value(), "a draft that was read can be written");
    require(fieldsOf(*ExtensionMessageWithUrl(*written)) == fieldsOf(*message),
            "a draft survives the trip");
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quillet::fuzz::readAndWrite({reinterpret_cast<const char*>(data), size});
    return 0;
}
