#pragma once

#include <optional>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

// An empty container and runtime folder that this process uses during the scope.
struct OwnContainer {
    TemporaryFolder container;
    TemporaryFolder runtime;
    EnvironmentVariable containerVariable{"QUILLET_CONTAINER", container.path()};
    EnvironmentVariable identifierVariable{"QUILLET_BUNDLE_IDENTIFIER", std::nullopt};
    EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
};

}  // namespace quillet::test
