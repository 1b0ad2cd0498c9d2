#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "model/ExtensionMessage.h"
#include "platform/url/URL.h"

// A message draft as one URL, the form in which extensions hand drafts to the host application;
// docs/drafts.md describes it. Linear in the size of the draft, for any thread.
namespace quillet {

// The URL "quillet://command?…" with the draft's bodies, subject, sender, account, recipients and
// attachments. None where `command`, which is not escaped, cannot be the host of a URL. Bytes that
// are not UTF-8 become U+FFFD; a path that holds such bytes would name another file then, so it is
// left out and logged.
std::optional<platform::URL> queryUrl(const ExtensionMessage& message, std::string_view command);

// A new draft with what such a URL carries; whatever else it holds is ignored, its command too.
// Recipients come back as texts ("a@x;b@y;") in toString, ccString and bccString, attachments as
// paths. Raises platform::Exception when a key or a value does not decode as UTF-8.
std::shared_ptr<ExtensionMessage> ExtensionMessageWithUrl(const platform::URL& url);

}  // namespace quillet
