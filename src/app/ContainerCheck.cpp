#include "app/ContainerCheck.h"

#include <cerrno>
#include <string>

#include "model/ContainerPaths.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

std::optional<platform::Error> containerProblem() {
    const std::optional<std::string> container = ExtensionUtilities::GroupPath();
    if (!container) {
        return std::nullopt;
    }
    if (auto problem = platform::FileManager::checkFolder(*container)) {
        return problem;
    }
    const std::string dataFolder = ExtensionUtilities::GroupDataPath().value();
    for (const std::string& folder :
         {dataFolder,
          platform::Path::appendingPathComponent(dataFolder, ExtensionUtilities::kTodayFolder)}) {
        if (auto problem = platform::FileManager::checkFolder(folder)) {
            return problem->code == ENOENT ? std::nullopt : problem;
        }
    }
    return std::nullopt;
}

}  // namespace quillet
