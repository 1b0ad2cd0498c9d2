#include "model/ExtensionAccount.h"

#include "model/RecordFields.h"

namespace quillet {

using platform::PropertyListValue;

std::shared_ptr<ExtensionAccount> ExtensionAccount::initWithDictonary(
    const PropertyListValue& dictionary) {
    return filledRecord("ExtensionAccount", dictionary, &ExtensionAccount::fill);
}

void ExtensionAccount::fill(const PropertyListValue& dictionary) {
    mail_.set(textField(dictionary, "mail", "No Mail"));
    name_.set(textField(dictionary, "name", ""));
    if (const PropertyListValue type = dictionary.valueForKey("type")) {
        type_ = type.integerValue();
    }
    if (const PropertyListValue enabled = dictionary.valueForKey("enabled")) {
        enabled_ = enabled.boolValue();
    }
    aliases_.set(std::make_shared<const Aliases>());
    aliases_.set(std::make_shared<const Aliases>(
        recordsOf<ExtensionAlias>(dictionary.valueForKey("aliases"))));
}

std::string ExtensionAccount::description() const {
    return recordDescription("ExtensionAccount", mail());
}

}  // namespace quillet
