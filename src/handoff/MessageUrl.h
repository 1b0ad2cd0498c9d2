#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "model/ExtensionMessage.h"
#include "platform/url/URL.h"

// A message draft as one URL: the form in which extensions pass drafts to the host application,
// which docs/drafts.md describes. Linear in the size of the draft, for any thread.
namespace quillet {

// The URL "quillet://command?…" with the draft's bodies, subject, sender, account, recipients and
// attachments. None when `command`, which is not escaped, cannot be the host of a URL. Bytes that
// are not UTF-8 become U+FFFD. A path with such bytes would then name another file, so it is left
// out and logged.
std::optional<platform::URL> queryUrl(const ExtensionMessage& message, std::string_view command);

// A new draft with the fields of such a URL; everything else in it is ignored, also its command.
// Recipients are returned as texts ("a@x;b@y;") in toString, ccString and bccString, attachments as
// paths. Raises platform::Exception when a key or a value does not decode as UTF-8.
std::shared_ptr<ExtensionMessage> ExtensionMessageWithUrl(const platform::URL& url);

}  // namespace quillet
