#include "mailhost/host/ContainerWriter.h"

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <unistd.h>
#include <utility>
#include <vector>

#include "mailhost/maildir/Sha256.h"

#include "model/ContainerPaths.h"
#include "platform/base/ByteBuffer.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"

namespace quillet::mailhost {

namespace {

namespace FileManager = platform::FileManager;
using platform::Error;
using platform::Path::appendingPathComponent;

constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;  // bytes, of any file read here
constexpr std::size_t kDigestSize = 64;
constexpr const char* kAdvice = "; remove it, or name another container";

std::optional<std::string> contentsOf(const std::string& path) {
    platform::ByteBuffer bytes;
    if (FileManager::readFile(path, bytes, kLargestFile)) {
        return std::nullopt;
    }
    return std::string(bytes.view());
}

std::string folderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

bool isOfToday(const std::string& file) {
    return file != ExtensionUtilities::kAccountsFile;
}

}  // namespace

ContainerWriter::ContainerWriter(std::string dataFolder, std::string listFile)
    : dataFolder_(std::move(dataFolder)),
      listFile_(std::move(listFile)),
      coordinator_(dataFolder_) {}

platform::Result<ContainerWriter::Changes> ContainerWriter::publish(
    const Files& files, const std::set<std::string>& kept) {
    if (const auto error = readList()) {
        return *error;
    }
    const Changes changes = changesFor(files, kept);
    if (const auto error = foreignFile(files)) {
        return *error;
    }
    if (changes.files.empty()) {
        return changes;
    }
    if (const auto error = intend(files, changes)) {
        return *error;
    }
    if (const auto error = writeChanges(files, changes)) {
        return *error;
    }
    settle(files, changes);
    return changes;
}

// Each line is a digest, a blank and the file that had, or was to get, contents of this digest.
std::optional<Error> ContainerWriter::readList() {
    if (std::exchange(isListRead_, true)) {
        return std::nullopt;
    }
    platform::ByteBuffer bytes;
    auto error = FileManager::readFile(listFile_, bytes, kLargestFile);
    if (error && error->code != ENOENT) {
        isListRead_ = false;
        return error;
    }
    std::istringstream lines{std::string(error ? std::string_view() : bytes.view())};
    for (std::string line; std::getline(lines, line);) {
        if (line.size() > kDigestSize + 1 && line[kDigestSize] == ' ') {
            written_[line.substr(kDigestSize + 1)].insert(line.substr(0, kDigestSize));
        }
    }
    return std::nullopt;
}

std::optional<Error> ContainerWriter::writeList() {
    std::string text;
    for (const auto& [file, digests] : written_) {
        for (const std::string& digest : digests) {
            text.append(digest).append(" ").append(file).append("\n");
        }
    }
    if (text == listOnDisk_) {  // as after a try that found the container busy
        return std::nullopt;
    }
    auto error = FileManager::writeFileAtomically(listFile_, text);
    listOnDisk_ = error ? std::nullopt : std::optional(std::move(text));
    return error;
}

std::string ContainerWriter::pathOf(const std::string& file) const {
    return appendingPathComponent(dataFolder_, file);
}

ContainerWriter::Changes ContainerWriter::changesFor(const Files& files,
                                                     const std::set<std::string>& kept) {
    Changes changes;
    for (const auto& [file, bytes] : files) {
        if (contentsOf(pathOf(file)) != bytes) {
            changes.files.insert(file);
        } else {
            written_[file].insert(sha256(bytes));
        }
    }
    for (const auto& [file, digests] : written_) {
        if (!files.contains(file) && !kept.contains(folderOf(file))) {
            changes.files.insert(file);
        }
    }
    return changes;
}

// A file at a place of the host's with contents that the host never wrote, or another file in an
// account's folder: the widget would show a mixture of two hosts.
std::optional<Error> ContainerWriter::foreignFile(const Files& files) {
    std::set<std::string> folders;
    for (const auto& [file, unused] : files) {
        const auto contents = contentsOf(pathOf(file));
        const auto own = written_.find(file);
        if (contents && (own == written_.end() || !own->second.contains(sha256(*contents)))) {
            return Error{"POSIX", EEXIST, "another program wrote " + pathOf(file) + kAdvice};
        }
        if (isOfToday(file)) {
            folders.insert(folderOf(file));
        }
    }
    for (const std::string& folder : folders) {
        if (auto error = foreignNeighbour(folder)) {
            return error;
        }
    }
    return std::nullopt;
}

std::optional<Error> ContainerWriter::foreignNeighbour(const std::string& folder) const {
    const auto entries = ExtensionUtilities::directoryContent(pathOf(folder));
    for (const std::string& path : entries.value_or(std::vector<std::string>())) {
        const std::string file =
            appendingPathComponent(folder, platform::Path::lastPathComponent(path));
        if (!written_.contains(file)) {
            return Error{"POSIX", EEXIST, "another program wrote " + path + kAdvice};
        }
    }
    return std::nullopt;
}

// The list names the new contents before they are written: after a crash in between, both the old
// and the new file are known as the host's own.
std::optional<Error> ContainerWriter::intend(const Files& files, const Changes& changes) {
    for (const std::string& file : changes.files) {
        if (const auto wanted = files.find(file); wanted != files.end()) {
            written_[file].insert(sha256(wanted->second));
        }
    }
    return writeList();
}

// What was written long ago needs no place in the list any more; the next list leaves it out.
void ContainerWriter::settle(const Files& files, const Changes& changes) {
    for (const std::string& file : changes.files) {
        written_.erase(file);
    }
    for (const auto& [file, bytes] : files) {
        written_[file] = {sha256(bytes)};
    }
}

std::optional<Error> ContainerWriter::writeChanges(const Files& files,
                                                   const Changes& changes) const {
    for (const std::string& folder : {folderOf(dataFolder_), dataFolder_}) {
        if (auto error = FileManager::createFolder(folder)) {
            return error;
        }
    }
    std::optional<Error> failure;
    const auto write = [&](bool ofToday) {
        for (const std::string& file : changes.files) {
            if (!failure && isOfToday(file) == ofToday) {
                failure = writeOne(files, file);
            }
        }
    };
    const auto coordinated = [&](std::string_view item, bool ofToday) {
        return coordinator_.coordinateWritingIfFree(
            appendingPathComponent(dataFolder_, item),
            [&](const std::string& /*path*/) { write(ofToday); });
    };
    auto busy = coordinated(ExtensionUtilities::kTodayFolder, true);
    if (!busy && !failure) {
        busy = coordinated(ExtensionUtilities::kAccountsFile, false);
    }
    return busy ? busy : failure;
}

std::optional<Error> ContainerWriter::writeOne(const Files& files, const std::string& file) const {
    const std::string path = pathOf(file);
    if (const auto wanted = files.find(file); wanted != files.end()) {
        auto error = FileManager::createFolder(folderOf(path));
        return error ? error : FileManager::writeFileAtomically(path, wanted->second);
    }
    const auto contents = contentsOf(path);
    if (!contents || !written_.at(file).contains(sha256(*contents))) {
        return std::nullopt;  // gone, or another program's by now
    }
    auto error = FileManager::removeItem(path);
    const auto neighbours = ExtensionUtilities::directoryContent(folderOf(path));
    if (!error && isOfToday(file) && neighbours && neighbours->empty()) {
        ::rmdir(folderOf(path).c_str());  // fails if hidden files of another program are there
    }
    return error;
}

}  // namespace quillet::mailhost
