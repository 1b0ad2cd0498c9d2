#pragma once

#include <any>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/RecordText.h"
#include "platform/plist/Number.h"
#include "platform/plist/PropertyList.h"

namespace quillet {

class ExtensionAddress;
class ExtensionMessage;

using ExtensionMessageList = std::shared_ptr<const std::vector<std::shared_ptr<ExtensionMessage>>>;

// One mail message as the host application wrote it, or a message draft.
//
// Every field is an atomic property: a getter returns the whole value and a setter replaces it, on
// any thread; the record as a whole is not locked. Text is UTF-8. Records have an identity and are
// held by shared_ptr. The records of one read share their memory, which lives as long as any of
// them.
class ExtensionMessage {
public:
    using Text = std::optional<std::string>;
    using Recipients = std::vector<std::shared_ptr<ExtensionAddress>>;
    // File paths as std::string, file URLs as platform::URL; anything else is kept and left alone.
    using Attachments = std::vector<std::any>;

    // An empty draft: empty bodies and lists, everything else zero or none.
    static std::shared_ptr<ExtensionMessage> init();
    // The record of a message dictionary, with defaults for missing keys. A value that cannot be
    // converted is logged and ends the reading: the record stays as far as it was filled.
    static std::shared_ptr<ExtensionMessage> initWithDictonary(
        const platform::PropertyListValue& dictionary);

    ~ExtensionMessage();

    // The host's numbers for the message and for its account.
    std::uint64_t idx() const noexcept { return idx_; }
    void setIdx(std::uint64_t value) noexcept { idx_ = value; }
    std::uint64_t acc_idx() const noexcept { return acc_idx_; }
    void setAcc_idx(std::uint64_t value) noexcept { acc_idx_ = value; }
    // States of the host; stored, never interpreted.
    std::uint64_t icon_fetch() const noexcept { return icon_fetch_; }
    void setIcon_fetch(std::uint64_t value) noexcept { icon_fetch_ = value; }
    std::uint64_t flip() const noexcept { return flip_; }
    void setFlip(std::uint64_t value) noexcept { flip_ = value; }

    Text subject() const { return get(subject_); }
    void setSubject(const Text& text) { set(subject_, text); }
    Text account() const { return get(account_); }
    void setAccount(const Text& text) { set(account_, text); }
    Text from() const { return get(from_); }
    void setFrom(const Text& text) { set(from_, text); }
    Text messageId() const { return get(messageId_); }
    void setMessageId(const Text& text) { set(messageId_, text); }
    Text folderPath() const { return get(folderPath_); }
    void setFolderPath(const Text& text) { set(folderPath_, text); }
    Text dateString() const { return get(dateString_); }
    void setDateString(const Text& text) { set(dateString_, text); }

    // Seconds since 1970-01-01 00:00:00 UTC.
    std::optional<double> date() const noexcept;
    void setDate(std::optional<double> secondsSince1970) noexcept;

    std::optional<platform::Number> unread() const;
    void setUnread(const std::optional<platform::Number>& number);
    // The standard-folder code that segments filter on.
    std::optional<platform::Number> folderStandardId() const;
    void setFolderStandardId(const std::optional<platform::Number>& number);

    // Draft fields; none in a record that was read from a dictionary.
    Text plainBody() const { return draftField(&Draft::plainBody); }
    void setPlainBody(Text text) { setDraftField(&Draft::plainBody, std::move(text)); }
    Text htmlBody() const { return draftField(&Draft::htmlBody); }
    void setHtmlBody(Text text) { setDraftField(&Draft::htmlBody, std::move(text)); }
    std::optional<Recipients> to() const { return draftField(&Draft::to); }
    void setTo(std::optional<Recipients> list) { setDraftField(&Draft::to, std::move(list)); }
    std::optional<Recipients> cc() const { return draftField(&Draft::cc); }
    void setCc(std::optional<Recipients> list) { setDraftField(&Draft::cc, std::move(list)); }
    std::optional<Recipients> bcc() const { return draftField(&Draft::bcc); }
    void setBcc(std::optional<Recipients> list) { setDraftField(&Draft::bcc, std::move(list)); }
    Text toString() const { return draftField(&Draft::toString); }
    void setToString(Text text) { setDraftField(&Draft::toString, std::move(text)); }
    Text ccString() const { return draftField(&Draft::ccString); }
    void setCcString(Text text) { setDraftField(&Draft::ccString, std::move(text)); }
    Text bccString() const { return draftField(&Draft::bccString); }
    void setBccString(Text text) { setDraftField(&Draft::bccString, std::move(text)); }
    // Appends HTML to the body; an absent body counts as empty. The text stays in one piece when
    // other threads append too.
    void appendHtmlBody(std::string_view html);
    std::optional<Attachments> attachments() const { return draftField(&Draft::attachments); }
    void setAttachments(std::optional<Attachments> list) {
        setDraftField(&Draft::attachments, std::move(list));
    }
    // Appends file paths to the list in the same way.
    void appendAttachments(const std::vector<std::string>& paths);

    // Whether the other is the same object or has the same messageId and account. An absent text
    // equals nothing. No other field counts.
    bool isEqual(const ExtensionMessage* other) const;
    bool isEqualToModel(const ExtensionMessage& other) const;

    // "ExtensionMessage " and the subject.
    std::string description() const;

private:
    friend class RecordBlock;
    friend class ExtensionMessageReader;

    struct Draft {
        Text plainBody;
        Text htmlBody;
        std::optional<Recipients> to;
        std::optional<Recipients> cc;
        std::optional<Recipients> bcc;
        Text toString;
        Text ccString;
        Text bccString;
        std::optional<Attachments> attachments;
    };

    // A number that can be absent, in no more bytes than the number takes.
    struct OptionalNumber {
        [[no_unique_address]] platform::Number number;
        bool present = false;
    };
    static_assert(sizeof(OptionalNumber) == sizeof(platform::Number));

    ExtensionMessage();

    Text get(const RecordText& field) const;
    void set(RecordText& field, const Text& text);
    std::optional<platform::Number> get(const OptionalNumber& field) const;
    void set(OptionalNumber& field, const std::optional<platform::Number>& number);
    template <typename Field>
    Field draftField(Field Draft::*field) const {
        const auto held = lock();
        return draft_ ? (*draft_).*field : Field();
    }
    template <typename Field>
    void setDraftField(Field Draft::*field, Field value) {
        const auto held = lock();
        std::swap(draft().*field, value);
    }
    std::unique_lock<std::mutex> lock() const;  // of all properties
    Draft& draft();                             // made when it is missing; the lock is held

    std::atomic<std::uint64_t> idx_ = 0;
    std::atomic<std::uint64_t> acc_idx_ = 0;
    std::atomic<std::uint64_t> icon_fetch_ = 0;
    std::atomic<std::uint64_t> flip_ = 0;
    RecordText subject_;
    RecordText account_;
    RecordText from_;
    RecordText messageId_;
    RecordText folderPath_;
    RecordText dateString_;
    std::atomic<double> date_;  // NaN for none
    OptionalNumber unread_;
    OptionalNumber folderStandardId_;
    std::unique_ptr<Draft> draft_;
};

}  // namespace quillet
