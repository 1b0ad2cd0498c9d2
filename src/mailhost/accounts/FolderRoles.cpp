#include "mailhost/accounts/FolderRoles.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <unicode/normalizer2.h>
#include <unordered_map>

#include "platform/base/Ascii.h"

namespace quillet::mailhost {

namespace {

struct RoleNames {
    FolderRole role;
    std::initializer_list<std::string_view> names;
};

// Names as mail programs and servers create them, and as people translate them.
const std::array<RoleNames, 9> kRoleNames{{
    {FolderRole::Inbox, {"INBOX"}},
    {FolderRole::Archive,
     {"Archive",  "Archives", "Archiv",     "Archivo", "Archivados", "Archivio", "Arquivo",
      "Arquivos", "Archief",  "Archieven",  "Arkiv",   "Arkisto",    "Archiwum", "Archiwa",
      "Архив",    "Архів",    "アーカイブ", "归档",    "存档",       "歸檔",     "封存",
      "보관함",   "أرشيف",    "الأرشيف",    "ארכיון",  "Arşiv",      "Archív",   "Αρχείο",
      "Arhivă",   "Archívum", "Arxiu",      "Arhiva",  "Архива",     "Lưu trữ",  "Archived"}},
    {FolderRole::AllMail,
     {"All Mail",           "Alle Nachrichten",  "Tous les messages", "[Gmail]/Todos",
      "Todos los mensajes", "Tutti i messaggi",  "Todos os e-mails",  "Todo o correio",
      "Alle berichten",     "Alla mejl",         "All e-post",        "Alle mails",
      "Kaikki viestit",     "[Gmail]/Wszystkie", "Вся почта",         "Уся пошта",
      "すべてのメール",     "所有邮件",          "所有郵件",          "전체보관함",
      "كل البريد",          "כל הדואר",          "Tüm Postalar",      "Všechny zprávy",
      "Όλα τα μηνύματα",    "Összes levél",      "Toate mesajele"}},
    {FolderRole::Trash,
     {"Trash",
      "Bin",
      "Deleted",
      "Deleted Messages",
      "Deleted Items",
      "Rubbish",
      "Papierkorb",
      "Gelöscht",
      "Gelöschte Elemente",
      "Gelöschte Objekte",
      "Corbeille",
      "Éléments supprimés",
      "Messages supprimés",
      "Papelera",
      "Elementos eliminados",
      "Mensajes eliminados",
      "Cestino",
      "Posta eliminata",
      "Elementi eliminati",
      "Messaggi eliminati",
      "Lixeira",
      "Lixo",
      "Itens Excluídos",
      "Itens Eliminados",
      "Itens Apagados",
      "Mensagens apagadas",
      "Prullenbak",
      "Prullenmand",
      "Verwijderde items",
      "Verwijderde berichten",
      "Papperskorg",
      "Papperskorgen",
      "Borttaget",
      "Borttagna objekt",
      "Papirkurv",
      "Slettet post",
      "Slettede elementer",
      "Slettede beskeder",
      "Roskakori",
      "Poistetut",
      "Kosz",
      "Elementy usunięte",
      "Usunięte",
      "Корзина",
      "Удаленные",
      "Удалённые",
      "Кошик",
      "Видалені",
      "Koš",
      "Odstraněná pošta",
      "Lomtár",
      "Kuka",
      "Törölt elemek",
      "Coș de gunoi",
      "Κάδος απορριμμάτων",
      "Διαγραμμένα",
      "Çöp Kutusu",
      "Çöp",
      "Silinmiş Öğeler",
      "Paperera",
      "ごみ箱",
      "ゴミ箱",
      "削除済みアイテム",
      "削除済みメッセージ",
      "已删除",
      "已删除邮件",
      "已删除的邮件",
      "废件箱",
      "废纸篓",
      "回收站",
      "垃圾桶",
      "刪除的郵件",
      "已刪除的郵件",
      "휴지통",
      "지운 편지함",
      "삭제된 메일함",
      "المهملات",
      "سلة المهملات",
      "العناصر المحذوفة",
      "אשפה",
      "פח אשפה",
      "פריטים שנמחקו",
      "Thùng rác"}},
    {FolderRole::Drafts,
     {"Drafts",     "Draft",       "Entwürfe", "Brouillons", "Borradores", "Bozze",
      "Rascunhos",  "Concepten",   "Utkast",   "Kladder",    "Luonnokset", "Wersje robocze",
      "Szkice",     "Черновики",   "Чернетки", "下書き",     "草稿",       "草稿箱",
      "임시보관함", "مسودات",      "المسودات", "טיוטות",     "Taslaklar",  "Koncepty",
      "Πρόχειρα",   "Piszkozatok", "Ciorne",   "Esborranys", "Thư nháp"}},
    {FolderRole::Junk,
     {"Junk",
      "Spam",
      "Junk E-mail",
      "Junk Email",
      "Junk Mail",
      "Bulk",
      "Bulk Mail",
      "Spamverdacht",
      "Unerwünscht",
      "Werbung",
      "Indésirables",
      "Courrier indésirable",
      "Pourriel",
      "Correo no deseado",
      "No deseado",
      "Indesiderata",
      "Posta indesiderata",
      "Lixo Eletrônico",
      "Lixo Eletrónico",
      "Lixo Electrónico",
      "Ongewenst",
      "Ongewenste e-mail",
      "Ongewenste reclame",
      "Skräp",
      "Skräppost",
      "Uønsket",
      "Uønsket e-post",
      "Uønsket mail",
      "Søppelpost",
      "Roskaposti",
      "Niechciane",
      "Wiadomości-śmieci",
      "Спам",
      "Нежелательная почта",
      "Небажана пошта",
      "迷惑メール",
      "垃圾邮件",
      "垃圾郵件",
      "스팸",
      "스팸메일함",
      "정크 메일",
      "البريد العشوائي",
      "بريد غير مرغوب",
      "الرسائل غير المرغوب فيها",
      "דואר זבל",
      "ספאם",
      "Önemsiz",
      "Gereksiz",
      "Nevyžádaná pošta",
      "Ανεπιθύμητα",
      "Levélszemét",
      "Correu brossa"}},
    {FolderRole::Sent, {"Sent",       "Sent Mail",          "Sent-Mail",
                        "Sent Items", "Sent Messages",      "Outbox",
                        "Gesendet",   "Gesendete Objekte",  "Gesendete Elemente",
                        "Envoyés",    "Messages envoyés",   "Éléments envoyés",
                        "Enviados",   "Elementos enviados", "Inviati",
                        "Inviata",    "Posta inviata",      "Itens Enviados",
                        "Verzonden",  "Verzonden items",    "Skickat",
                        "Sendt",      "Sendte elementer",   "Lähetetyt",
                        "Wysłane",    "Отправленные",       "Надіслані",
                        "送信済み",   "送信済みメール",     "已发送",
                        "已发送邮件", "寄件備份",           "보낸편지함",
                        "المرسل",     "البريد المرسل",      "נשלח",
                        "דואר שנשלח"}},
    {FolderRole::ToDo,
     {"To Do",     "Todo",         "To-Do",    "Zu erledigen", "Aufgaben",     "À faire",
      "Por hacer", "Da fare",      "A fazer",  "Te doen",      "Att göra",     "At gøre",
      "Å gjøre",   "Gjøremål",     "Tehtävät", "Do zrobienia", "К выполнению", "Задачи",
      "やること",  "待办",         "待办事项", "待辦事項",     "할 일",        "المهام",
      "לביצוע",    "Yapılacaklar", "Úkoly",    "Tennivalók"}},
    {FolderRole::Memo,
     {"Notes",   "Note",     "Memo",      "Memos",        "Notizen", "Notas",         "Notities",
      "Noter",   "Notater",  "Notatki",   "Anteckningar", "Muistio", "Muistiinpanot", "Заметки",
      "Нотатки", "メモ",     "ノート",    "备忘录",       "便笺",    "笔记",          "備忘錄",
      "메모",    "ملاحظات",  "الملاحظات", "مذكّرات",       "הערות",   "פתקים",         "תזכורות",
      "Notlar",  "Poznámky", "Jegyzetek"}},
}};

using RolesByName = std::unordered_map<std::string, FolderRole>;

const RolesByName& rolesByName() {
    static const RolesByName roles = [] {
        RolesByName map;
        for (const RoleNames& entry : kRoleNames) {
            for (const std::string_view name : entry.names) {
                map.emplace(foldedName(name), entry.role);
            }
        }
        return map;
    }();
    return roles;
}

FolderRole roleOfFolded(const std::string& folded) {
    const auto found = rolesByName().find(folded);
    return found == rolesByName().end() ? FolderRole::None : found->second;
}

// "[gmail]/x" for the forms that the same folder has on disk, "x" for one below the Inbox.
std::string withUsualPrefix(const std::string& folded) {
    constexpr std::array<std::string_view, 2> kGmail{"[gmail]", "[google mail]"};
    constexpr std::string_view kInbox = "inbox";
    constexpr std::string_view kSeparators = "/.";
    const auto restAfter = [&](std::string_view prefix) -> std::string_view {
        const std::string_view text = folded;
        const bool fits = text.starts_with(prefix) && text.size() > prefix.size() + 1 &&
                          kSeparators.find(text[prefix.size()]) != std::string_view::npos;
        return fits ? text.substr(prefix.size() + 1) : std::string_view();
    };
    for (const std::string_view prefix : kGmail) {
        if (const std::string_view rest = restAfter(prefix); !rest.empty()) {
            return "[gmail]/" + std::string(rest);
        }
    }
    const std::string_view rest = restAfter(kInbox);
    return rest.empty() ? folded : std::string(rest);
}

// The year of "…/2026" or "….2026", and what is before it.
unsigned takeYear(std::string& folded) {
    constexpr std::size_t kDigits = 4;
    if (folded.size() <= kDigits + 1) {
        return 0;
    }
    const std::string digits = folded.substr(folded.size() - kDigits);
    const char separator = folded[folded.size() - kDigits - 1];
    if (!std::all_of(digits.begin(), digits.end(), platform::isAsciiDigit) ||
        (separator != '/' && separator != '.')) {
        return 0;
    }
    folded.resize(folded.size() - kDigits - 1);
    return static_cast<unsigned>(std::stoul(digits));
}

FolderRole roleOfUsual(const std::string& usual) {
    constexpr std::string_view kGmail = "[gmail]/";
    const FolderRole role = roleOfFolded(usual);
    return role == FolderRole::None && usual.starts_with(kGmail)
               ? roleOfFolded(usual.substr(kGmail.size()))
               : role;
}

}  // namespace

std::string foldedName(std::string_view name) {
    UErrorCode failure = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(failure);
    std::string folded;
    if (U_SUCCESS(failure)) {
        const icu::UnicodeString text = icu::UnicodeString::fromUTF8(
            icu::StringPiece(name.data(), static_cast<std::int32_t>(name.size())));
        normalizer->normalize(text, failure).toUTF8String(folded);
    }
    return folded;
}

NamedRole roleOfFolder(std::string_view name) {
    std::string usual = withUsualPrefix(foldedName(name));
    const FolderRole role = roleOfUsual(usual);
    if (role != FolderRole::None) {
        return {role, 0};
    }
    const unsigned year = takeYear(usual);
    return year > 0 && roleOfUsual(usual) == FolderRole::Archive
               ? NamedRole{FolderRole::Archive, year}
               : NamedRole();
}

}  // namespace quillet::mailhost
