#include "model/ExtensionGroup.h"

#include "model/RecordFields.h"
#include "platform/base/TextFormat.h"

namespace quillet {

std::shared_ptr<ExtensionGroup> ExtensionGroup::initWithDictonary(
    const platform::PropertyListValue& dictionary) {
    return filledRecord("ExtensionGroup", dictionary, &ExtensionGroup::fill);
}

void ExtensionGroup::fill(const platform::PropertyListValue& dictionary) {
    idx_.set(textField(dictionary, "idx", ""));
    name_.set(textField(dictionary, "name", "No Name"));
    addresses_.set(std::make_shared<const Addresses>());
    addresses_.set(std::make_shared<const Addresses>(
        recordsOf<ExtensionAddress>(dictionary.valueForKey("addresses"))));
}

std::string ExtensionGroup::prettyprint() const {
    const Text text = name();
    const std::string_view shown = text ? *text : platform::kAbsentText;
    const auto members = addresses();
    if (members == nullptr || members->empty()) {
        return std::string(shown);
    }
    return platform::formatText("%@ (%@)", {shown, std::to_string(members->size())});
}

std::string ExtensionGroup::description() const {
    return recordDescription("ExtensionGroup", name());
}

}  // namespace quillet
