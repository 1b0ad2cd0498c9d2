#pragma once

#include <optional>

#include "platform/base/Error.h"

namespace quillet {

// Why the shared container cannot be read: it, its data folder or "Today" in it is not a folder, or
// may not be listed or entered. ENOENT if the container does not exist yet. None if whatever exists
// of it can be read, or if no container is named.
std::optional<platform::Error> containerProblem();

}  // namespace quillet
