#include "platform/base/Error.h"

#include <system_error>

namespace quillet::platform {

Error posixError(int code, const std::string& what) {
    return {"POSIX", code, what + ": " + std::generic_category().message(code)};
}

}  // namespace quillet::platform
