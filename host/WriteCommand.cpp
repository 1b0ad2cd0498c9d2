#include "host/WriteCommand.h"

#include <iostream>

#include "host/SampleStore.h"
#include "host/StoreWriter.h"
#include "model/HostInterface.h"
#include "platform/base/StandardError.h"
#include "platform/desktop/DistributedNotificationCenter.h"

namespace quillet::host {

int runWrite(const CommandLine& line) {
    const std::string folder = dataFolder(line.folder);
    const auto files = sampleStore(currentSampleTime());
    if (const auto failure = writeStore(folder, files)) {
        platform::writeErrorLine("quillet-sample-host: " + failure->error.description());
        platform::writeErrorLine(
            failure->isOfLock ? "Let XDG_RUNTIME_DIR name a folder that is yours alone, or TMPDIR "
                                "one that you may write into."
                              : "Name a folder that you may write into.");
        return kFailure;
    }
    const bool isTold = platform::DistributedNotificationCenter::defaultCenter().postNotification(
        kStoreNotificationName, kStoreNotificationObject);
    if (line.isVerbose) {
        for (const auto& file : files) {
            std::cout << platform::printableLine(folder + '/' + file.path) << '\n';
        }
        std::cout << (isTold ? "Told the widget to read it.\n"
                             : "There is no session bus on which to tell the widget.\n");
    }
    return kSuccess;
}

}  // namespace quillet::host
