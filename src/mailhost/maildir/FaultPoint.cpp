#include "mailhost/maildir/FaultPoint.h"

#include <csignal>
#include <cstdlib>
#include <string_view>

namespace quillet::mailhost {

void faultPoint(const char* name) {
    const char* wanted = std::getenv("QUILLET_FAULT_POINT");
    std::string_view rest = wanted == nullptr ? "" : wanted;
    if (!rest.starts_with(name)) {
        return;
    }
    rest.remove_prefix(std::string_view(name).size());
    if (rest.empty()) {
        std::raise(SIGKILL);
    } else if (rest == ":stop") {
        std::raise(SIGSTOP);
    }
}

}  // namespace quillet::mailhost
