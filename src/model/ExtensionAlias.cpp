#include "model/ExtensionAlias.h"

#include "model/RecordFields.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/base/TextFormat.h"

namespace quillet {

std::shared_ptr<ExtensionAlias> ExtensionAlias::initWithDictonary(
    const platform::PropertyListValue& dictionary) {
    auto alias = std::make_shared<ExtensionAlias>();
    try {
        alias->fill(dictionary);
    } catch (const platform::Exception& exception) {
        platform::Log::write("ExtensionAlias initWithDictonary %@", {exception.description()});
    }
    return alias;
}

void ExtensionAlias::fill(const platform::PropertyListValue& dictionary) {
    mail_.set(textField(dictionary, "mail", "No Mail"));
    name_.set(textField(dictionary, "name", ""));
    account_.set(textField(dictionary, "account", ""));
}

std::string ExtensionAlias::description() const {
    const auto text = mail();
    return platform::formatText("ExtensionAlias %@", {text ? *text : platform::kAbsentText});
}

}  // namespace quillet
