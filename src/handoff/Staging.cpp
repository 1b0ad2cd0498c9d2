#include "handoff/Staging.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

#include "handoff/StagingFolder.h"
#include "model/ContainerPaths.h"
#include "model/GoodPath.h"
#include "platform/base/Exception.h"
#include "platform/base/Log.h"
#include "platform/base/Result.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;
using platform::Error;
using platform::Log;
using platform::Result;

namespace {

// Runs `work` with the path of the staging folder, under the writer's lock on it. On an error
// `work` has not run.
std::optional<Error> coordinate(std::string_view service,
                                const platform::FileCoordinator::Accessor& work) {
    const Result<std::string> folder = stagingFolder(service);
    if (!folder) {
        return folder.error();
    }
    return platform::FileCoordinator(ExtensionUtilities::GroupDataPath())
        .coordinateWriting(folder.value(), work);
}

// The log lines of one kind of staging.
struct Lines {
    std::string_view writing;
    std::string_view exception;
    std::string_view coordination;
};

// Calls `stage` with each element and the staging folder; it returns the staged path or an error.
template <typename Element, typename Stage>
std::vector<std::string> stageEach(std::string_view service,
                                   const Lines& lines,
                                   const std::vector<Element>& elements,
                                   Stage stage) {
    std::vector<std::string> staged;
    const auto work = [&](const std::string& folder) {
        try {
            for (const Element& element : elements) {
                if (const Result<std::string> path = stage(element, folder)) {
                    staged.push_back(path.value());
                } else {
                    Log::write(lines.writing, {path.error().description()});
                }
            }
        } catch (const platform::Exception& exception) {
            Log::write(lines.exception, {exception.description()});
        }
    };
    if (const auto error = coordinate(service, work)) {
        Log::write(lines.coordination, {error->description()});
    }
    return staged;
}

std::string freePath(const std::string& name, const std::string& folder) {
    return RequestUtils::GetGoodPath(name, folder).value();
}

Result<std::string> stageFile(const std::string& source, const std::string& folder) {
    std::string path = freePath(Path::lastPathComponent(source), folder);
    if (auto error = FileManager::copyFile(source, path)) {
        return *std::move(error);
    }
    return path;
}

Result<std::string> stageData(std::string_view data, const std::string& folder) {
    std::string path = freePath("image.png", folder);
    if (auto error = FileManager::writeFileAtomically(path, data)) {
        return *std::move(error);
    }
    return path;
}

}  // namespace

bool ExtensionUtilities::namesStagingFolder(std::string_view service) {
    constexpr std::string_view kNot[] = {
        "", ".", "..", kTodayFolder, kAccountsFile, kContactsFolder};
    return std::find(std::begin(kNot), std::end(kNot), service) == std::end(kNot) &&
           service.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

Result<std::string> stagingFolder(std::string_view service) {
    if (!ExtensionUtilities::namesStagingFolder(service)) {
        return platform::posixError(EINVAL, "\"" + std::string(service) + "\" as a staging folder");
    }
    const std::optional<std::string> dataFolder = ExtensionUtilities::GroupDataPath();
    if (!dataFolder) {
        return platform::posixError(ENOENT, "the shared container");
    }
    return Path::appendingPathComponent(*dataFolder, service);
}

void ExtensionUtilities::ShareInit(std::string_view service) {
    const auto error = coordinate(service, [](const std::string& folder) {
        if (const auto failure = FileManager::removeItem(folder)) {
            Log::write("shareInit delete %@", {failure->description()});
        }
        if (const auto failure = FileManager::createFolder(folder)) {
            Log::write("shareInit create %@", {failure->description()});
        }
    });
    if (error) {
        Log::write("shareInit %@", {error->description()});
    }
}

std::vector<std::string> ExtensionUtilities::ShareFiles(std::string_view service,
                                                        const std::vector<std::string>& paths) {
    constexpr Lines kLines{
        "Error writing file shareFiles %@", "Exception shareFiles %@", "Error shareFiles %@"};
    return stageEach(service, kLines, paths, stageFile);
}

std::vector<std::string> ExtensionUtilities::ShareDatas(
    std::string_view service, const std::vector<std::string_view>& blocks) {
    constexpr Lines kLines{
        "Error writing file shareDatas %@", "Exception shareDatas %@", "Error shareDatas %@"};
    return stageEach(service, kLines, blocks, stageData);
}

}  // namespace quillet
