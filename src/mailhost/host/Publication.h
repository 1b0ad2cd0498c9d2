#pragma once

#include <string>
#include <vector>

#include "mailhost/host/ContainerWriter.h"
#include "mailhost/maildir/FolderReader.h"

namespace quillet::mailhost {

// Codes of standard folders, by which the widget sorts messages into its segments.
enum class StandardFolder { Inbox = 1, ToDo = 11, Memo = 12 };

// The messages of one mail folder that the widget shows in one segment.
struct PublishedList {
    std::string folder;  // its name
    StandardFolder code = StandardFolder::Inbox;
    std::vector<MessageRow> rows;  // newest first
};

struct PublishedAccount {
    std::string address;
    std::string name;
    std::vector<PublishedList> lists;
};

// The folder of an account's messages below the data folder.
std::string accountFolder(const std::string& address);

// What the container holds for these accounts: the account list and one file for each list. The
// same accounts make the same bytes. Any thread.
ContainerWriter::Files containerFiles(const std::vector<PublishedAccount>& accounts);

}  // namespace quillet::mailhost
