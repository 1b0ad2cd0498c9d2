#include "model/ExtensionAddress.h"

#include "model/RecordFields.h"
#include "platform/base/TextFormat.h"
#include "platform/base/Utf8.h"

namespace quillet {

using platform::PropertyListValue;
using platform::trimmingWhitespaceAndNewlines;

std::shared_ptr<ExtensionAddress> ExtensionAddress::initWithDictonary(
    const PropertyListValue& dictionary) {
    return filledRecord("ExtensionAddress", dictionary, &ExtensionAddress::fill);
}

void ExtensionAddress::fill(const PropertyListValue& dictionary) {
    const PropertyListValue mail = dictionary.valueForKey("mail");
    // Unlike an account's, this text is not translated.
    mail_.set(mail ? mail.stringValue() : "No Mail");
    firstName_.set(textField(dictionary, "firstName", ""));
    lastName_.set(textField(dictionary, "lastName", ""));
    company_.set(textField(dictionary, "company", ""));
    nickname_.set(textField(dictionary, "nickname", ""));
    if (const PropertyListValue rank = dictionary.valueForKey("rank")) {
        rank_ = rank.integerValue();
    }
}

std::string ExtensionAddress::fullName() const {
    const Text first = firstName();
    const Text last = lastName();
    const std::string names = platform::formatText(
        "%@ %@", {first ? *first : platform::kAbsentText, last ? *last : platform::kAbsentText});
    return std::string(trimmingWhitespaceAndNewlines(names));
}

std::string ExtensionAddress::prettyprint() const {
    std::string text = fullName();
    if (text.empty()) {
        text = company().value_or(std::string());
    }
    if (const Text address = mail(); address && !address->empty()) {
        text += platform::formatText(" <%@>", {*address});
    }
    return std::string(trimmingWhitespaceAndNewlines(text));
}

std::string ExtensionAddress::description() const {
    return recordDescription("ExtensionAddress", mail());
}

}  // namespace quillet
