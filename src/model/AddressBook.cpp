#include "model/AddressBook.h"

#include "model/ContainerPaths.h"
#include "model/RecordFields.h"
#include "platform/base/Log.h"
#include "platform/files/FileCoordinator.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "platform/plist/PropertyList.h"

namespace quillet::ExtensionUtilities {

namespace Path = platform::Path;
using platform::PropertyListDocument;
using platform::PropertyListValue;

AddressBook AddressesAndGroups() {
    const std::optional<std::string> dataFolder = GroupDataPath();
    if (!dataFolder) {
        return {};
    }
    PropertyListDocument addressFile;
    PropertyListDocument groupFile;
    PropertyListValue addresses;
    // The files are only read, but a writer's lock keeps every other party out.
    const auto error =
        platform::FileCoordinator(dataFolder)
            .coordinateWriting(
                Path::appendingPathComponent(*dataFolder, kContactsFolder),
                [&](const std::string& folder) {
                    if (!platform::FileManager::fileExists(folder)) {
                        if (const auto failure = platform::FileManager::createFolder(folder)) {
                            platform::Log::write("AddressesAndGroups %@", {failure->description()});
                            return;
                        }
                    }
                    addresses = arrayWithContentsOfFile(
                        Path::appendingPathComponent(folder, "Addresses.plist"), addressFile);
                    arrayWithContentsOfFile(Path::appendingPathComponent(folder, "Groups.plist"),
                                            groupFile);
                });
    if (error) {
        platform::Log::write("NSFileCoordinator AddressesAndGroups %@", {error->description()});
    }
    // Groups are not stored: callers expect an empty list.
    return {recordsOf<ExtensionAddress>(addresses), {}};
}

}  // namespace quillet::ExtensionUtilities
