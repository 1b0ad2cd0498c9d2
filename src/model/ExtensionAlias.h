#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/base/Atomic.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// Another sender identity of a mail account. Fields are atomic properties; text is UTF-8.
class ExtensionAlias {
public:
    using Text = std::optional<std::string>;

    // The record of an alias dictionary, with defaults for missing keys. A value of a wrong
    // type is logged and ends the reading: the record stays as far as it was filled.
    static std::shared_ptr<ExtensionAlias> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    Text mail() const { return mail_.get(); }
    void setMail(Text text) { mail_.set(std::move(text)); }
    Text name() const { return name_.get(); }
    void setName(Text text) { name_.set(std::move(text)); }
    Text account() const { return account_.get(); }
    void setAccount(Text text) { account_.set(std::move(text)); }

    // "ExtensionAlias " and the mail address.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<Text> mail_;
    platform::Atomic<Text> name_;
    platform::Atomic<Text> account_;
};

}  // namespace quillet
