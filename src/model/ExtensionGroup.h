#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/ExtensionAddress.h"
#include "platform/base/Atomic.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// A group of the address book. Fields are atomic properties; text is UTF-8.
class ExtensionGroup {
public:
    using Text = std::optional<std::string>;
    using Addresses = std::vector<std::shared_ptr<ExtensionAddress>>;

    // The record of a group dictionary, with defaults for missing keys. A value of a wrong
    // type is logged and ends the reading: the record stays as far as it was filled.
    static std::shared_ptr<ExtensionGroup> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    // The host's name for the group; not interpreted.
    Text idx() const { return idx_.get(); }
    void setIdx(Text text) { idx_.set(std::move(text)); }
    Text name() const { return name_.get(); }
    void setName(Text text) { name_.set(std::move(text)); }
    // Null in a record whose reading ended before them.
    std::shared_ptr<const Addresses> addresses() const { return addresses_.get(); }
    void setAddresses(std::shared_ptr<const Addresses> list) { addresses_.set(std::move(list)); }

    // The name, followed by the number of addresses in parentheses if there are any.
    std::string prettyprint() const;
    // "ExtensionGroup " and the name.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<Text> idx_;
    platform::Atomic<Text> name_;
    platform::Atomic<std::shared_ptr<const Addresses>> addresses_;
};

}  // namespace quillet
