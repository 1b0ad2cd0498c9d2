// quillet-bench make FOLDER FORMAT [ACCOUNTS FILES MESSAGES]   makes a container
// quillet-bench read READER FOLDER [EMPTY]                     reads it once and reports
// quillet-bench cost READER FOLDER [EMPTY]                     does the same without a digest
//
// A report is one line: milliseconds of the clock and of the processor, messages, digest, peak
// memory in KiB. If an EMPTY container is named, it is read before the clock starts, so that
// one-time work such as loading the locale's data does not count. A digest copies every text of
// every message, which takes hours for texts that hostile files share.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/PeakMemory.h"
#include "bench/Readers.h"
#include "bench/StoreMaker.h"
#include "bench/Timing.h"

namespace quillet::bench {

namespace {

using Arguments = std::vector<std::string>;

const std::map<std::string, Reader, std::less<>> kReaders{{"quillet", readWithQuillet},
                                                          {"libplist", readWithLibplist},
                                                          {"pugixml", readWithPugixml},
                                                          {"plain", readPlainBytes}};

Outcome readFrom(const Reader& reader, const std::string& container) {
    setenv("QUILLET_CONTAINER", container.c_str(), 1);
    return reader(container);
}

void make(const Arguments& arguments) {
    StoreSize size;
    size.format = arguments.at(1) == "binary" ? test::PropertyListFormat::Binary
                                              : test::PropertyListFormat::Xml;
    if (arguments.size() > 2) {
        size.accounts = std::stoul(arguments[2]);
        size.filesPerAccount = std::stoul(arguments.at(3));
        size.messagesPerFile = std::stoul(arguments.at(4));
    }
    makeStore(arguments[0], size);
}

enum class WithDigest { No, Yes };

void read(const Arguments& arguments, WithDigest digest) {
    const Reader& reader = kReaders.at(arguments.at(0));
    if (arguments.size() > 2) {
        readFrom(reader, arguments[2]);
    }
    const double start = milliseconds(CLOCK_MONOTONIC);
    const double processorStart = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    const Outcome outcome = readFrom(reader, arguments.at(1));
    const double processorTime = milliseconds(CLOCK_PROCESS_CPUTIME_ID) - processorStart;
    const double time = milliseconds(CLOCK_MONOTONIC) - start;
    const long peak = peakMemory();
    std::printf("%.3f %.3f %zu %016llx %ld\n",
                time,
                processorTime,
                outcome.messages,
                static_cast<unsigned long long>(digest == WithDigest::Yes ? outcome.digest() : 0),
                peak);
}

int run(const Arguments& arguments) {
    const std::string command = arguments.empty() ? "" : arguments.front();
    const Arguments rest(arguments.begin() + (arguments.empty() ? 0 : 1), arguments.end());
    try {
        if (command == "make") {
            make(rest);
            return EXIT_SUCCESS;
        }
        if (command == "read" || command == "cost") {
            read(rest, command == "read" ? WithDigest::Yes : WithDigest::No);
            return EXIT_SUCCESS;
        }
        throw std::invalid_argument("use make, read or cost");
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "quillet-bench: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}

}  // namespace

}  // namespace quillet::bench

int main(int argc, char** argv) {
    return quillet::bench::run({argv + 1, argv + argc});
}
