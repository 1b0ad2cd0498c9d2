#include "handoff/MessageImage.h"

#include "platform/base/TextFormat.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet {

namespace FileManager = platform::FileManager;
namespace Path = platform::Path;

std::string img_path(const ExtensionMessage& message) {
    const platform::Result<std::string> temporary = FileManager::temporaryFolder();
    if (!temporary) {
        return {};
    }
    const std::string folder = Path::appendingPathComponent(temporary.value(), "TodayImages");
    FileManager::createFolder(folder);  // a failure shows when the file is written
    const std::string name = platform::formatText(
        "%lu_%lu", {std::to_string(message.acc_idx()), std::to_string(message.idx())});
    return Path::appendingPathComponent(folder, name);
}

void save_image(const ExtensionMessage& message, std::string_view data) {
    const std::string path = img_path(message);
    if (!path.empty()) {
        FileManager::writeFileAtomically(path, data);
    }
}

std::optional<std::string> get_image(const ExtensionMessage& /*message*/) {
    return std::nullopt;  // on purpose, also after save_image
}

}  // namespace quillet
