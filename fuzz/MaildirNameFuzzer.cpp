// Takes a text apart as the name of a message file and makes the name for its move to another
// folder. What belongs to the message has to stay, what belongs to its place must not.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "mailhost/maildir/MaildirName.h"

#include "fuzz/Require.h"
#include "platform/base/Ascii.h"

namespace quillet::fuzz {

namespace {

using namespace mailhost;

void checkIdentifier(std::string_view base) {
    const std::string stable = stableBase(base);
    require(stableBase(stable) == stable, "a stable base stays as it is");
    const std::string identifier = identifierOf(base);
    require(identifier == identifierOf(stable), "the place does not change the identifier");
    require(identifier.size() == 33 && identifier.starts_with('q') &&
                std::all_of(identifier.begin() + 1,
                            identifier.end(),
                            [](char digit) {
                                return platform::isAsciiDigit(digit) ||
                                       (digit >= 'a' && digit <= 'f');
                            }),
            "an identifier is q and 32 digits");
}

// Sizes stay; what is no number does not.
bool staysAsItIsIfItIsASize(std::string_view before, std::string_view after, const char* field) {
    const auto size = fieldOf(before, field);
    const bool isSize = size && !size->empty() && size->size() <= 20 &&
                        std::all_of(size->begin(), size->end(), platform::isAsciiDigit);
    return fieldOf(after, field) == (isSize ? size : std::nullopt);
}

void checkMove(std::string_view fileName, const MaildirName& name) {
    const std::string moved = newMaildirName(fileName, {1, 2, 3, 4, "a/b:c"});
    const MaildirName newName = parseMaildirName(moved);
    require(newName.flags == name.flags, "flags stay");
    require(staysAsItIsIfItIsASize(name.base, newName.base, "S"), "the size stays");
    require(staysAsItIsIfItIsASize(name.base, newName.base, "W"), "the other size stays");
    require(!fieldOf(newName.base, "U") && !fieldOf(newName.base, "FMD5"), "the place is left");
    require(timeOf(newName.base) == std::max<std::uint64_t>(timeOf(name.base), 1),
            "the time stays");
    require(fileName.find('/') != std::string_view::npos || moved.find('/') == std::string::npos,
            "a name stays in its folder");
}

}  // namespace

}  // namespace quillet::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view fileName(reinterpret_cast<const char*>(data), size);
    const quillet::mailhost::MaildirName name = quillet::mailhost::parseMaildirName(fileName);
    quillet::fuzz::checkIdentifier(name.base);
    quillet::fuzz::checkMove(fileName, name);
    return 0;
}
