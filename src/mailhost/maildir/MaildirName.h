#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The names of message files in the folders "cur" and "new" of a mail folder:
//   BASE[:2,FLAGS]   for instance "1700000000.M1P2Q3.host,S=512,U=7:2,FS"
// Text only, without the file system. Names are bytes of any kind and length. Any thread.
namespace quillet::mailhost {

// A name taken apart. Programs that cannot have ":" in names write ";2," or "!2,".
struct MaildirName {
    std::string_view base;   // with its fields ("S=512")
    std::string_view flags;  // letters, as they stand; empty in a name without flags
    char separator = ':';    // before "2,"

    bool has(char flag) const { return flags.find(flag) != std::string_view::npos; }
};

// The parts lie in `fileName`.
MaildirName parseMaildirName(std::string_view fileName);

// `base` without the fields that the synchronising programs write, ",U=…" and ",FMD5=…": it stays
// the same for the life of a message in its folder.
std::string stableBase(std::string_view base);

// What the container and commands call a message: "q" and 32 lower-case hexadecimal digits of the
// SHA-256 of stableBase().
std::string identifierOf(std::string_view base);

// Whether a text has the form of an identifier.
bool isIdentifier(std::string_view text);

// The text of the field "NAME=" of a base, for instance of "U"; none if it is missing.
std::optional<std::string_view> fieldOf(std::string_view base, std::string_view name);

// The number in front of the first "." (seconds since 1970 in most names), and of the field "U".
// 0 if there is none or if it does not fit.
std::uint64_t timeOf(std::string_view base);
std::uint64_t uidOf(std::string_view base);

// What makes a new name unique.
struct UniqueName {
    std::int64_t seconds = 0;   // since 1970; stands in where the old name has no time
    unsigned microseconds = 0;  // of now
    std::uint64_t process = 0;  // its identifier
    std::uint64_t counter = 0;  // of deliveries of this process
    std::string host;           // "/" and ":" are escaped as "\057" and "\072"
};

// A name that no program has seen, for a message that moves to another folder: the old time, the
// fields "S" and "W" and all flags stay, nothing else. A message never takes its old name along:
// synchronising programs would take it for one that they know, and lose it.
std::string newMaildirName(std::string_view oldFileName, const UniqueName& unique);

}  // namespace quillet::mailhost
