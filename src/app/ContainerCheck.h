#pragma once

#include <optional>

#include "platform/base/Error.h"

namespace quillet {

// Why the shared container cannot be read: it, its data folder or "Today" in it is no folder, or
// may not be listed or entered. ENOENT where the container is not there yet. None where it can be
// read, as far as it is there, and where there is no container.
std::optional<platform::Error> containerProblem();

}  // namespace quillet
