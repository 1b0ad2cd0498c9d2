#include "model/Accounts.h"

#include "model/ContainerPaths.h"
#include "model/RecordFields.h"
#include "platform/base/Log.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/Path.h"
#include "platform/plist/PropertyList.h"

namespace quillet::ExtensionUtilities {

namespace Path = platform::Path;

std::vector<std::shared_ptr<ExtensionAccount>> Accounts() {
    const std::optional<std::string> dataFolder = GroupDataPath();
    if (!dataFolder) {
        return {};
    }
    const std::string file = Path::appendingPathComponent(*dataFolder, kAccountsFile);
    platform::PropertyListDocument document;
    platform::PropertyListValue list;
    // The file is only read, but a writer's lock keeps every other party out.
    const auto error =
        platform::FileCoordinator(dataFolder).coordinateWriting(file, [&](const std::string& path) {
            list = arrayWithContentsOfFile(path, document, "aliases");
        });
    if (error) {
        platform::Log::write("NSFileCoordinator Accounts %@", {error->description()});
    }
    return recordsOf<ExtensionAccount>(list);
}

}  // namespace quillet::ExtensionUtilities
