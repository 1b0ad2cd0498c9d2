#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/Atomic.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// Another sender identity of a mail account. Fields are atomic properties; text is UTF-8.
class ExtensionAlias {
public:
    // The record of an alias dictionary, defaults in place of what is missing. A value of a wrong
    // type is logged and leaves the record as far as it was filled.
    static std::shared_ptr<ExtensionAlias> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    std::optional<std::string> mail() const { return mail_.get(); }
    std::optional<std::string> name() const { return name_.get(); }
    std::optional<std::string> account() const { return account_.get(); }

    // "ExtensionAlias " and the mail address.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<std::optional<std::string>> mail_;
    platform::Atomic<std::optional<std::string>> name_;
    platform::Atomic<std::optional<std::string>> account_;
};

}  // namespace quillet
