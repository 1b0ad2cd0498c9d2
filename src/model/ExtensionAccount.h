#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/ExtensionAlias.h"
#include "platform/base/Atomic.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// A mail account of the host application. Fields are atomic properties; text is UTF-8.
class ExtensionAccount {
public:
    using Text = std::optional<std::string>;
    using Aliases = std::vector<std::shared_ptr<ExtensionAlias>>;

    // The record of an account dictionary, with defaults for missing keys. A value of a wrong
    // type is logged and ends the reading: the record stays as far as it was filled.
    static std::shared_ptr<ExtensionAccount> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    // The mail address, which is also the name of the account's folder below "Today".
    Text mail() const { return mail_.get(); }
    void setMail(Text text) { mail_.set(std::move(text)); }
    Text name() const { return name_.get(); }
    void setName(Text text) { name_.set(std::move(text)); }
    // The account's other sender identities; null in a record whose reading ended before them.
    std::shared_ptr<const Aliases> aliases() const { return aliases_.get(); }
    void setAliases(std::shared_ptr<const Aliases> aliases) { aliases_.set(std::move(aliases)); }
    // The host's type code; not interpreted.
    std::int64_t type() const noexcept { return type_; }
    void setType(std::int64_t type) noexcept { type_ = type; }
    bool enabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) noexcept { enabled_ = enabled; }

    // "ExtensionAccount " and the mail address.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<Text> mail_;
    platform::Atomic<Text> name_;
    platform::Atomic<std::shared_ptr<const Aliases>> aliases_;
    std::atomic<std::int64_t> type_ = 0;
    std::atomic<bool> enabled_ = false;
};

}  // namespace quillet
