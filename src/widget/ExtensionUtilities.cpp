#include "widget/ExtensionUtilities.h"

#include "platform/foundation/Log.h"

namespace quillet::ExtensionUtilities {

bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName,
                              bool background) {
    for (const auto& message : messages) {
        platform::Log::write("LaunchCommandForMessages %@ %@ %@ %@",
                             {commandName,
                              message->account().value_or(""),
                              message->messageId().value_or(""),
                              background ? "in the background" : "in the foreground"});
    }
    return false;
}

}  // namespace quillet::ExtensionUtilities
