#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/url/URL.h"

namespace quillet::host {

// A file that a draft names. What is needed of it is taken when the draft comes: a later share may
// empty the staging folder.
struct DraftAttachment {
    // Foreign: in no staging folder, symbolic links resolved; such a file is never opened, and
    // nothing is locked for it.
    enum class State { Taken, Missing, Unreadable, Foreign };

    std::string path;  // as the draft names it
    State state = State::Foreign;
    std::size_t size = 0;  // bytes, of Taken
    std::string picture;   // the bytes of a picture that can be shown; empty: none
};

// A draft of another program, ready to be shown.
struct Draft {
    std::string to;  // mail addresses, each followed by ";"; so are the next two
    std::string cc;
    std::string bcc;
    std::string subject;
    std::string body;  // HTML of a stranger
    std::vector<DraftAttachment> attachments;
};

// Reads a draft and takes its files, each under the reader's lock on its staging folder, for which
// it waits without a limit. Raises platform::Exception where the URL does not decode. Any thread.
Draft receiveDraft(const platform::URL& url, const std::string& dataFolder);

}  // namespace quillet::host
