#include "widget/MessageStore.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <iterator>
#include <thread>
#include <utility>

#include "model/ExtensionDate.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Path.h"
#include "widget/MessageFileReader.h"
#include "widget/Parts.h"
#include "widget/TodayViewController.h"

namespace quillet {

namespace {

// Below so many files a part costs more to start than it saves.
constexpr std::size_t kFilesPerPart = 32;
// The rest of the desktop wants its processors, too.
constexpr std::size_t kMostParts = 4;

std::size_t numberOfParts(std::size_t files) {
    const std::size_t processors = std::thread::hardware_concurrency();  // 0 where not known
    return std::clamp<std::size_t>(
        files / kFilesPerPart, 1, std::clamp<std::size_t>(processors, 1, kMostParts));
}

}  // namespace

MessageStore::MessageStore(EnabledAccounts enabled) : enabled_(std::move(enabled)) {}

void MessageStore::read(const std::string& todayFolder) {
    try {
        readFiles(messageFiles(todayFolder));
    } catch (const platform::Exception& exception) {
        platform::Log::write("updateData exception %@", {exception.description()});
    }
}

MessageStore::Paths MessageStore::messageFiles(const std::string& todayFolder) const {
    Paths paths;
    for (const std::string& folder :
         TodayViewController::directoryContent(todayFolder).value_or(Paths())) {
        if (!enabled_.contains(platform::Path::lastPathComponent(folder))) {
            continue;
        }
        if (auto files = TodayViewController::directoryContent(folder)) {
            std::move(files->begin(), files->end(), std::back_inserter(paths));
        }
    }
    return paths;
}

void MessageStore::readFiles(const Paths& files) {
    const std::size_t count = numberOfParts(files.size());
    const double now = ExtensionDate::now();
    std::deque<MessageFileReader> readers;
    while (readers.size() < count) {
        readers.emplace_back(now);
    }
    std::atomic<bool> stopped = false;
    const auto readPart = [&](std::size_t part) {
        const std::size_t end = files.size() * (part + 1) / count;
        for (std::size_t i = files.size() * part / count; i < end && !stopped; ++i) {
            readers[part].read(files[i]);
        }
    };
    auto parts = startParts(count, readPart);
    try {
        for (std::size_t part = 0; part < count; ++part) {
            records_->push_back(readers[part].records());
            parts[part].get();
        }
    } catch (...) {
        stopped = true;  // for the parts behind the one that failed
        throw;
    }
}

}  // namespace quillet
