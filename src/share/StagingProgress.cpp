#include "share/StagingProgress.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace quillet {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::milliseconds kInterval{1000};

std::uintmax_t bytesIn(const fs::path& folder) {
    std::uintmax_t bytes = 0;
    std::error_code gone;  // files may be renamed meanwhile
    for (fs::directory_iterator entry(folder, gone), end; !gone && entry != end;
         entry.increment(gone)) {
        std::error_code unknown;
        const std::uintmax_t size = entry->file_size(unknown);
        bytes += unknown ? 0 : size;
    }
    return bytes;
}

}  // namespace

StagingProgress::StagingProgress(std::string folder, std::uintmax_t total)
    : folder_(std::move(folder)), total_(total) {
    if (total_ > 0 && ::isatty(STDERR_FILENO) == 1) {
        timer_.callOnTimeout([this] { show(); });
        timer_.start(kInterval);
    }
}

StagingProgress::~StagingProgress() {
    if (isShown_) {
        std::fputs("\r\033[K", stderr);
    }
}

void StagingProgress::show() {
    isShown_ = true;
    const double share = static_cast<double>(bytesIn(folder_)) / static_cast<double>(total_);
    std::fprintf(stderr, "\rquillet-share: staging the files, %.0f %%", 100 * share);
}

}  // namespace quillet
