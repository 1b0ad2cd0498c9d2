// Reads a text as each of the files that describe mail accounts, and writes the configuration
// again.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "mailhost/accounts/AccountAddress.h"
#include "mailhost/accounts/Configuration.h"
#include "mailhost/accounts/FolderRoles.h"
#include "mailhost/accounts/MbsyncConfiguration.h"
#include "mailhost/accounts/ModifiedUtf7.h"
#include "mailhost/accounts/MsmtpConfiguration.h"
#include "mailhost/accounts/NotmuchConfiguration.h"

#include "fuzz/Require.h"

namespace quillet::fuzz {

namespace {

using mailhost::Configuration;

const std::string kHome = "/home/u";

void readOwnConfiguration(std::string_view text) {
    const mailhost::UserFolders folders{kHome, "/c", "/d", "/s"};
    const auto read = mailhost::readConfiguration(text, folders);
    const auto* configuration = std::get_if<Configuration>(&read);
    if (configuration == nullptr) {
        require(!std::get<1>(read).empty(), "what is not read has a problem");
        return;
    }
    for (const mailhost::AccountConfiguration& account : configuration->accounts) {
        require(mailhost::isAccountAddress(account.address), "an account has an address");
        require(account.maildir.starts_with('/'), "a Maildir is absolute");
    }
    const auto again =
        mailhost::readConfiguration(mailhost::configurationText(*configuration, folders), folders);
    require(std::holds_alternative<Configuration>(again), "what is written can be read");
    require(std::get<Configuration>(again) == *configuration, "reading undoes writing");
}

void readOtherConfigurations(std::string_view text) {
    for (const mailhost::MbsyncAccount& account : mailhost::readMbsyncConfiguration(text, kHome)) {
        require(account.maildir.starts_with('/'), "mbsync's Maildir is absolute");
        require(account.inbox.empty() || account.inbox.starts_with('/'), "and so is its Inbox");
    }
    const auto notmuch = mailhost::readNotmuchConfiguration(text, kHome);
    require(notmuch.mailRoot.empty() || notmuch.mailRoot.starts_with('/'),
            "notmuch's folder is absolute");
    require(mailhost::readMsmtpSender(text).size() <= text.size(), "a sender is part of the text");
}

void readName(std::string_view text) {
    if (const auto name = mailhost::decodeModifiedUtf7(text)) {
        require(mailhost::encodeModifiedUtf7(*name) == text, "encoding undoes decoding");
    }
    mailhost::roleOfFolder(text);
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    quillet::fuzz::readOwnConfiguration(text);
    quillet::fuzz::readOtherConfigurations(text);
    quillet::fuzz::readName(text);
    return 0;
}
