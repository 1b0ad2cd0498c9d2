#include "model/ExtensionAlias.h"

#include "model/RecordFields.h"

namespace quillet {

std::shared_ptr<ExtensionAlias> ExtensionAlias::initWithDictonary(
    const platform::PropertyListValue& dictionary) {
    return filledRecord("ExtensionAlias", dictionary, &ExtensionAlias::fill);
}

void ExtensionAlias::fill(const platform::PropertyListValue& dictionary) {
    mail_.set(textField(dictionary, "mail", "No Mail"));
    name_.set(textField(dictionary, "name", ""));
    account_.set(textField(dictionary, "account", ""));
}

std::string ExtensionAlias::description() const {
    return recordDescription("ExtensionAlias", mail());
}

}  // namespace quillet
