#include "model/ExtensionUtilities.h"
#include "platform/foundation/FileCoordinator.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Path.h"
#include "platform/foundation/PropertyList.h"

namespace quillet::ExtensionUtilities {

namespace Path = platform::Path;
using platform::PropertyListDocument;
using platform::PropertyListType;

namespace {

// Reads a property list whose root is an array; false for anything else.
bool readArray(const std::string& path, PropertyListDocument& document) {
    return !platform::FileManager::readFile(
               path, document.bytes(), PropertyListDocument::kMaximumFileSize) &&
           !document.parse() && document.root().type() == PropertyListType::Array;
}

}  // namespace

std::vector<std::shared_ptr<ExtensionAccount>> Accounts() {
    const std::optional<std::string> dataFolder = GroupDataPath();
    if (!dataFolder) {
        return {};
    }
    const std::string file = Path::appendingPathExtension(
        Path::appendingPathComponent(*dataFolder, "Accounts"), "plist");
    PropertyListDocument document;
    bool found = false;
    // The file is only read, but a writer's lock orders the read against every other party.
    const auto error =
        platform::FileCoordinator(dataFolder).coordinateWriting(file, [&](const std::string& path) {
            found = readArray(path, document);
        });
    if (error) {
        platform::Log::write("NSFileCoordinator Accounts %@", {error->description()});
    }
    std::vector<std::shared_ptr<ExtensionAccount>> accounts;
    if (found) {
        for (const platform::PropertyListValue& element : document.root()) {
            accounts.push_back(ExtensionAccount::initWithDictonary(element));
        }
    }
    return accounts;
}

}  // namespace quillet::ExtensionUtilities
