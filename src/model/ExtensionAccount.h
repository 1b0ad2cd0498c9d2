#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/ExtensionAlias.h"
#include "platform/foundation/Atomic.h"
#include "platform/foundation/PropertyList.h"

namespace quillet {

// A mail account of the host application. Fields are atomic properties; text is UTF-8.
class ExtensionAccount {
public:
    using Aliases = std::vector<std::shared_ptr<ExtensionAlias>>;

    // The record of an account dictionary, defaults in place of what is missing. A value of a
    // wrong type is logged and leaves the record as far as it was filled.
    static std::shared_ptr<ExtensionAccount> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    // The mail address, which is also the name of the account's folder below "Today".
    std::optional<std::string> mail() const { return mail_.get(); }
    std::optional<std::string> name() const { return name_.get(); }
    // The account's other sender identities, none in a record whose reading stopped before them.
    std::shared_ptr<const Aliases> aliases() const { return aliases_.get(); }
    // The host's type code; not interpreted.
    std::int64_t type() const noexcept { return type_; }
    bool enabled() const noexcept { return enabled_; }

    // "ExtensionAccount " and the mail address.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<std::optional<std::string>> mail_;
    platform::Atomic<std::optional<std::string>> name_;
    platform::Atomic<std::shared_ptr<const Aliases>> aliases_;
    std::atomic<std::int64_t> type_ = 0;
    std::atomic<bool> enabled_ = false;
};

}  // namespace quillet
