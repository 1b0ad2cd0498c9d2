#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bench/Digest.h"
#include "bench/Readers.h"
#include "bench/store/StoreWriter.h"
#include "model/CentralDateCache.h"
#include "model/ExtensionDate.h"
#include "model/RecordBlock.h"

namespace quillet::bench {

namespace fs = std::filesystem;

void forEachFile(const std::string& container,
                 const std::function<void(char* bytes, std::size_t size)>& read) {
    std::vector<char> buffer;
    for (const auto& account : fs::directory_iterator(test::dataFolder(container) + "/Today")) {
        for (const auto& file : fs::directory_iterator(account.path())) {
            const std::size_t size = file.file_size();
            buffer.resize(std::max(buffer.size(), size));
            std::ifstream stream;
            stream.rdbuf()->pubsetbuf(nullptr, 0);  // reads straight into our buffer
            stream.open(file.path(), std::ios::binary);
            if (!stream.read(buffer.data(), static_cast<std::streamsize>(size))) {
                throw std::runtime_error("cannot read " + file.path().string());
            }
            read(buffer.data(), size);
        }
    }
}

Outcome finished(PeerMessages messages) {
    const std::shared_ptr<RecordBlock> texts = RecordBlock::make();
    CentralDateCache dates(ExtensionDate::now(), *texts);
    for (const auto& message : messages) {
        message->dateString = dates.text(message->date).view();
    }
    std::stable_sort(messages.begin(), messages.end(), [](const auto& left, const auto& right) {
        return left->date > right->date;
    });
    const std::size_t count = messages.size();
    return {count, [messages = std::move(messages)] {
                Digest digest;
                for (const auto& message : messages) {
                    digest.add(message->idx, message->acc_idx, message->icon_fetch, message->flip);
                    digest.add(message->subject, message->account, message->from);
                    digest.add(message->messageId, message->folderPath, message->dateString);
                    digest.add(message->date, message->unread, message->folderStandardId);
                    digest.next();
                }
                return digest.value();
            }};
}

Outcome readPlainBytes(const std::string& container) {
    forEachFile(container, [](char*, std::size_t) {});
    return {0, [] { return std::uint64_t{0}; }};
}

}  // namespace quillet::bench
