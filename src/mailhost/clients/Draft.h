#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"

namespace quillet::mailhost {

// A draft of another program, as mail programs take it. Any program of the session may have sent
// it: nothing in it is to be trusted.
struct Draft {
    std::string account;  // mail address; empty: none
    std::string from;     // as the program wrote it; empty: none
    std::vector<std::string> to;
    std::vector<std::string> cc;
    std::vector<std::string> bcc;
    std::string subject;
    std::string text;                // the body as plain text
    std::string html;                // the body as HTML without what may do harm; empty: none
    std::vector<std::string> files;  // paths
};

// The draft of a URL; its files are the paths that it names. Any thread.
Draft draftOf(const ExtensionMessage& message);

// The addresses of a list in which each is followed by ";". Ones that no header can hold are left
// out. Any thread.
std::vector<std::string> recipientsIn(std::string_view list);

}  // namespace quillet::mailhost
