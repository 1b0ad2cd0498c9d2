#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/base/Atomic.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

// A person or company of the address book, or a recipient of a draft. Fields are atomic
// properties, none in a new record; text is UTF-8.
class ExtensionAddress {
public:
    using Text = std::optional<std::string>;

    // The record of an address dictionary, with defaults for missing keys. A value of a wrong
    // type is logged and ends the reading: the record stays as far as it was filled.
    static std::shared_ptr<ExtensionAddress> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    Text mail() const { return mail_.get(); }
    void setMail(Text text) { mail_.set(std::move(text)); }
    Text firstName() const { return firstName_.get(); }
    void setFirstName(Text text) { firstName_.set(std::move(text)); }
    Text lastName() const { return lastName_.get(); }
    void setLastName(Text text) { lastName_.set(std::move(text)); }
    Text company() const { return company_.get(); }
    void setCompany(Text text) { company_.set(std::move(text)); }
    Text nickname() const { return nickname_.get(); }
    void setNickname(Text text) { nickname_.set(std::move(text)); }
    // How much the host prefers this entry; not interpreted.
    std::int64_t rank() const noexcept { return rank_; }
    void setRank(std::int64_t rank) noexcept { rank_ = rank; }

    // First and last name with a blank between them, without white space at the ends. An absent
    // name (of a new record, or of one that was not read to its end) reads "(null)".
    std::string fullName() const;
    // "Anna Berg <anna@example.org>": the full name, or the company when it is empty, and the mail
    // address if there is one.
    std::string prettyprint() const;
    // "ExtensionAddress " and the mail address.
    std::string description() const;

private:
    void fill(const platform::PropertyListValue& dictionary);

    platform::Atomic<Text> mail_;
    platform::Atomic<Text> firstName_;
    platform::Atomic<Text> lastName_;
    platform::Atomic<Text> company_;
    platform::Atomic<Text> nickname_;
    std::atomic<std::int64_t> rank_ = 0;
};

}  // namespace quillet
