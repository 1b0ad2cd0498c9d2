#pragma once

#include <string>
#include <vector>

#include "mailhost/clients/Draft.h"
#include "mailhost/maildir/ReplyHeader.h"

// URLs by which mail programs begin a message (RFC 6068). Any thread.
namespace quillet::mailhost {

// Whether the URL names the files of a draft, as "attach". Few programs take files so.
enum class MailtoFiles { Named, LeftOut };

// A reply to the sender of a message: "Re: " once, and the place in its thread.
std::string mailtoForReply(const ReplyHeader& header);

// A draft with its text.
std::string mailtoForDraft(const Draft& draft, MailtoFiles files);

}  // namespace quillet::mailhost
