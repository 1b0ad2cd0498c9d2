#include "host/SampleStore.h"

#include <chrono>
#include <cstddef>
#include <ctime>
#include <span>
#include <string_view>

namespace quillet::host {
namespace {

constexpr double kDay = 86400;  // seconds

// Standard-folder codes: which segment shows a folder.
constexpr int kInbox = 1;
constexpr int kToDo = 11;
constexpr int kMemo = 12;
constexpr int kDone = 13;

struct Message {
    // How long ago: below 1 a share of today so far, from 1 up a number of days.
    double age;
    std::string_view from;
    std::string_view subject;  // empty: the message has none
    bool isUnread = false;
    std::string_view messageId = {};  // empty: made from account and number
};

struct Account {
    std::string_view mail;
    std::string_view name;
    int type;
    bool isEnabled;
    std::string_view alias;  // empty: none
};

struct Folder {
    std::size_t account;  // index into kAccounts
    std::string_view name;
    int standardId;
    PropertyListFormat format;
    std::span<const Message> messages;
};

constexpr Account kAccounts[] = {
    {"anna.berg@example.com", "Anna Berg", 1, true, "anna@berg-family.example"},
    {"studio@lindqvist.example", "Lindqvist & Berg", 2, true, ""},
    {"a.berg@old-university.example", "Old university mailbox", 1, false, ""},
};

constexpr std::string_view kSharedMessageId = "7c41-train-tickets@example.com";

constexpr Message kPrivateInbox[] = {
    {0.02, "Zoë Ångström", "Façade colours for the café: which of the two do you prefer?", true},
    {0.12, "Дарья Волкова", "Расписание поездов на пятницу", true},
    {0.35, "佐藤ひろし", "お見積もりの件(再送)"},
    {1.05,
     "Konstantin von Hohenlohe-Schillingsfürst, Department of Early Music",
     "Minutes of the third meeting of the working group on historical tuning systems, with the "
     "corrected table of temperaments, the list of open questions and two proposals for a date"},
    {0.80, "ليلى حداد", "موعد الاجتماع يوم الثلاثاء القادم", true},
    {1.4, "אבי כהן", "תמונות מהטיול לגליל"},
    {1.9, "Märta Öberg", "Saturday, from four o'clock"},
    {3.2, "Tomáš Dvořák", ""},
    {6.1, "Ελένη Παππά", "Πρόσκληση στα εγκαίνια της έκθεσης"},
    {16.3, "City Library", "Two of your loans are due next week"},
};

constexpr Message kStudioInbox[] = {
    {0.06, "Ελένη Παππά", "Τα σχέδια για το νέο βιβλίο", true},
    {0.22, "李娜", "会议纪要:下周的产品发布"},
    {1.6, "Jürgen Weiß", "Re: Größe der Schilder im Flur", true},
    {1.2, "Accounts <billing@paper-mill.example>", "Invoice 2041 & delivery note"},
    {2.5, "Gülşah Yıldız", "İstanbul atölyesi için fotoğraflar"},
    {4.7, "Søren Kjær", "Prøvetryk er på vej"},
    {9.0, "Nguyễn Thị Hương", "Bản in thử ngày mai"},
};

constexpr Message kPrivateToDo[] = {
    {2.6, "Anna Berg", "Book the train to Göteborg", true, kSharedMessageId},
    {0.5, "Дарья Волкова", "Подтвердить бронирование гостиницы"},
    {5.3, "Tomáš Dvořák", "Send the scanned contract back"},
};

constexpr Message kStudioToDo[] = {
    {1.7, "李娜", "确认封面颜色", true},
    {7.8, "Jürgen Weiß", "Angebot für die Beschilderung prüfen"},
};

constexpr Message kPrivateMemo[] = {
    {3.4, "Anna Berg", "Ideas for the reading corner"},
    {11.6, "Anna Berg", "Wi-Fi of the summer house, and where the spare key hangs"},
};

constexpr Message kStudioMemo[] = {
    {3.9, "佐藤ひろし", "紙見本の番号"},
};

// A host may keep a message in two files for a while, here until it has tidied up.
constexpr Message kPrivateRecent[] = {
    {2.6, "Anna Berg", "Book the train to Göteborg", true, kSharedMessageId},
};

constexpr Message kPrivateDone[] = {
    {12.4, "City Library", "Thank you for returning your loans"},
};

constexpr Message kOldInbox[] = {
    {0.01, "Faculty office", "This mailbox is closed", true},
    {0.03, "Computing service", "Your account has been archived"},
};

constexpr auto kXml = PropertyListFormat::Xml;
constexpr auto kBinary = PropertyListFormat::Binary;

constexpr Folder kFolders[] = {
    {0, "INBOX", kInbox, kXml, kPrivateInbox},
    {0, "To Do", kToDo, kBinary, kPrivateToDo},
    {0, "Recent", kToDo, kXml, kPrivateRecent},
    {0, "Memo", kMemo, kXml, kPrivateMemo},
    {0, "Done", kDone, kBinary, kPrivateDone},
    {1, "INBOX", kInbox, kBinary, kStudioInbox},
    {1, "To Do", kToDo, kXml, kStudioToDo},
    {1, "Memo", kMemo, kBinary, kStudioMemo},
    {2, "INBOX", kInbox, kXml, kOldInbox},
};

double instant(double age, const SampleTime& time) {
    return time.now - (age < 1 ? age * time.sinceMidnight : age * kDay);
}

Value messageValue(const Message& message,
                   const Folder& folder,
                   std::size_t index,
                   const SampleTime& time) {
    const Account& account = kAccounts[folder.account];
    std::string messageId(message.messageId);
    if (messageId.empty()) {
        messageId = std::to_string(folder.standardId) + "-" + std::to_string(index) + "." +
                    std::string(account.mail);
    }
    Dictionary entries{
        {"idx", index},
        {"acc_idx", folder.account + 1},
        {"icon_fetch", 1},
        {"flip", 0},
        {"subject", message.subject},
        {"messageId", messageId},
        {"from", message.from},
        {"account", account.mail},
        {"folder", folder.name},
        {"folderStid", folder.standardId},
        {"isUnread", message.isUnread ? 1 : 0},
        {"date", instant(message.age, time)},
    };
    if (message.subject.empty()) {
        std::erase_if(entries, [](const Entry& entry) { return entry.first == "subject"; });
    }
    return entries;
}

StoreFile folderFile(const Folder& folder, const SampleTime& time) {
    const Account& account = kAccounts[folder.account];
    Array messages;
    for (const Message& message : folder.messages) {
        messages.push_back(messageValue(message, folder, messages.size() + 1, time));
    }
    std::string path = "Today/";
    path.append(account.mail).append("/").append(folder.name).append(".plist");
    return {std::move(path),
            Dictionary{{"account", account.mail}, {"folder", folder.name}, {"data", messages}},
            folder.format};
}

StoreFile accountsFile() {
    Array accounts;
    for (const Account& account : kAccounts) {
        Array aliases;
        if (!account.alias.empty()) {
            aliases.emplace_back(Dictionary{
                {"mail", account.alias}, {"name", account.name}, {"account", account.mail}});
        }
        accounts.emplace_back(Dictionary{{"mail", account.mail},
                                         {"name", account.name},
                                         {"type", account.type},
                                         {"enabled", account.isEnabled},
                                         {"aliases", aliases}});
    }
    return {"Accounts.plist", accounts, kXml};
}

}  // namespace

SampleTime currentSampleTime() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    return {static_cast<double>(now),
            static_cast<double>((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec)};
}

std::vector<StoreFile> sampleStore(const SampleTime& time) {
    std::vector<StoreFile> files;
    for (const Folder& folder : kFolders) {
        files.push_back(folderFile(folder, time));
    }
    files.push_back(accountsFile());
    return files;
}

}  // namespace quillet::host
