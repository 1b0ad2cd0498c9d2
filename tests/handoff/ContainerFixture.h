#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "platform/base/ByteBuffer.h"
#include "platform/files/FileManager.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::test {

// An empty container, and a folder for files to share.
class ContainerFixture : public ::testing::Test {
protected:
    // A path in the staging folder of the service "share".
    std::string staged(const std::string& name) const {
        return container.path("SharedData/share/" + name);
    }
    std::vector<std::string> stagedNames() const {
        return platform::FileManager::contentsOfFolder(container.path("SharedData/share")).value();
    }
    static std::string contents(const std::string& path) {
        constexpr std::size_t kLimit = std::size_t{1} << 30;
        platform::ByteBuffer bytes;
        const auto error = platform::FileManager::readFile(path, bytes, kLimit);
        return error ? error->description() : std::string(bytes.view());
    }

    TemporaryFolder container;
    TemporaryFolder files;
    TemporaryFolder runtime;
    EnvironmentVariable containerVariable{"QUILLET_CONTAINER", container.path()};
    EnvironmentVariable runtimeVariable{"XDG_RUNTIME_DIR", runtime.path()};
    LogCapture log;
};

}  // namespace quillet::test
