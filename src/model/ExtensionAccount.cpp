#include "model/ExtensionAccount.h"

#include "model/RecordFields.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"

namespace quillet {

using platform::PropertyListValue;

std::shared_ptr<ExtensionAccount> ExtensionAccount::initWithDictonary(
    const PropertyListValue& dictionary) {
    auto account = std::make_shared<ExtensionAccount>();
    try {
        account->fill(dictionary);
    } catch (const platform::Exception& exception) {
        platform::Log::write("ExtensionAccount initWithDictonary %@", {exception.description()});
    }
    return account;
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
    const auto text = mail();
    return platform::formatText("ExtensionAccount %@", {text ? *text : platform::kAbsentText});
}

}  // namespace quillet
