#include "mailhost/host/Publication.h"

#include <charconv>
#include <cstdint>

#include "model/ContainerPaths.h"
#include "platform/files/FileLock.h"
#include "platform/files/Path.h"
#include "platform/plist/PropertyListWriter.h"

namespace quillet::mailhost {

namespace {

using platform::Path::appendingPathComponent;
using platform::PropertyListTree::Array;
using platform::PropertyListTree::Dictionary;
using platform::PropertyListTree::Value;

// A number that stays the same as long as the identifier: its first digits, which fit into a
// signed number.
std::int64_t numberOf(std::string_view identifier) {
    constexpr std::size_t kDigits = 15;
    constexpr int kHexadecimal = 16;
    const std::string_view digits = identifier.substr(1, kDigits);
    std::int64_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, kHexadecimal);
    return number;
}

Value messageValue(const MessageRow& row,
                   const PublishedAccount& account,
                   std::size_t accountNumber,
                   const PublishedList& list) {
    Dictionary message{{"idx", numberOf(row.identifier)}, {"acc_idx", accountNumber}};
    if (!row.subject.empty()) {  // the widget has a text of its own for none
        message.emplace_back("subject", row.subject);
    }
    message.emplace_back("messageId", row.identifier);
    message.emplace_back("from", row.from);
    message.emplace_back("account", account.address);
    message.emplace_back("folder", list.folder);
    message.emplace_back("folderStid", static_cast<int>(list.code));
    message.emplace_back("isUnread", row.isUnread ? 1 : 0);
    message.emplace_back("date", row.date);
    return message;
}

std::string messageFile(const PublishedAccount& account,
                        std::size_t accountNumber,
                        const PublishedList& list) {
    Array messages;
    for (const MessageRow& row : list.rows) {
        messages.push_back(messageValue(row, account, accountNumber, list));
    }
    return platform::writeBinaryPropertyList(Dictionary{
        {"account", account.address}, {"folder", list.folder}, {"data", std::move(messages)}});
}

// The code comes first: no name begins with "." then, which would hide the file. Folders of
// different places may have one name; `number` tells them apart.
std::string fileName(const PublishedList& list, int number) {
    const std::string suffix = number == 1 ? "" : "-" + std::to_string(number);
    return platform::FileLock::nameFor(
        std::to_string(static_cast<int>(list.code)) + "-" + list.folder + suffix, ".plist");
}

Value accountValue(const PublishedAccount& account) {
    return Dictionary{{"mail", account.address},
                      {"name", account.name},
                      {"type", 0},
                      {"enabled", true},
                      {"aliases", Array{}}};
}

}  // namespace

std::string accountFolder(const std::string& address) {
    return appendingPathComponent(ExtensionUtilities::kTodayFolder, address);
}

ContainerWriter::Files containerFiles(const std::vector<PublishedAccount>& accounts) {
    ContainerWriter::Files files;
    Array accountValues;
    for (const PublishedAccount& account : accounts) {
        accountValues.push_back(accountValue(account));
        const std::string folder =
            appendingPathComponent(std::string(ExtensionUtilities::kTodayFolder), account.address);
        for (const PublishedList& list : account.lists) {
            std::string file = appendingPathComponent(folder, fileName(list, 1));
            for (int number = 2; files.contains(file); ++number) {
                file = appendingPathComponent(folder, fileName(list, number));
            }
            files[file] = messageFile(account, accountValues.size(), list);
        }
    }
    files[std::string(ExtensionUtilities::kAccountsFile)] =
        platform::writeBinaryPropertyList(accountValues);
    return files;
}

}  // namespace quillet::mailhost
