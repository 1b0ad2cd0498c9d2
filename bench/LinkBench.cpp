// quillet-link-bench [ROUNDS]   measures the link finder on hostile texts and prints a table
//
// Each text is searched for links and, in the same turn, read once by a search for a byte that it
// does not have. The run ends with 3 if a text takes longer than kMostMilliseconds.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Timing.h"
#include "platform/url/LinkDetector.h"

namespace quillet::bench {

namespace {

constexpr std::size_t kBytes = 4'000'000;
constexpr double kMostMilliseconds = 1000;  // for one text

struct Case {
    const char* name;
    const char* start;
    const char* piece;  // follows the start until the text is long enough
};

constexpr std::array kCases{
    Case{"mail", "", "Dear Anna, see https://example.com/a?b=c or write to ben@example.com.\r\n"},
    Case{"@", "", "@"},
    Case{"a@", "", "a@"},
    Case{":", "", ":"},
    Case{"a.", "", "a."},
    Case{"www.", "", "www."},
    Case{"äwww.", "", "äwww."},
    Case{"http://", "", "http://"},
    Case{"http://a:", "", "http://a:"},
    Case{"http://a b@c.de", "", "http://a b@c.de "},
    Case{"http://ä", "", "http://ä "},
    Case{"mailto:a@", "", "mailto:a@"},
    Case{"data:", "", "data:"},
    Case{"path of brackets", "http://a.example/", "([{"},
    Case{"path of full stops", "http://a.example/", "."},
    Case{"path of Japanese", "http://a.example/", "本日の会議"},
    Case{"not UTF-8", "", "\xFF"},
};

double processorMilliseconds() {
    return milliseconds(CLOCK_PROCESS_CPUTIME_ID);
}

double millisecondsOf(const std::function<void()>& work) {
    const double start = processorMilliseconds();
    work();
    return processorMilliseconds() - start;
}

// Returns whether the text stays within the limit.
bool measure(const Case& each, std::size_t rounds) {
    std::string text = each.start;
    while (text.size() < kBytes) {
        text += each.piece;
    }
    std::size_t links = 0;
    std::vector<double> finding;
    std::vector<double> reading;
    for (std::size_t round = 0; round < rounds; ++round) {
        finding.push_back(
            millisecondsOf([&] { links = platform::LinkDetector::linksIn(text).size(); }));
        reading.push_back(millisecondsOf([&] {
            if (text.find('\0') != std::string::npos) {
                throw std::runtime_error("the text holds the byte that none holds");
            }
        }));
    }
    const double megabytes = static_cast<double>(text.size()) / 1e6;
    std::printf("%-20s%10zu%12.2f%12.3f%11.0fx\n",
                each.name,
                links,
                median(finding) / megabytes,
                median(reading) / megabytes,
                median(finding) / median(reading));
    return median(finding) <= kMostMilliseconds;
}

int run(std::size_t rounds) {
    std::printf("Links in %zu MB of a text, milliseconds of the processor for 1 MB\n",
                kBytes / 1'000'000);
    std::printf("%-20s%10s%12s%12s%12s\n", "text", "links", "links ms", "read ms", "to read");
    bool isFast = true;
    for (const Case& each : kCases) {
        isFast = measure(each, rounds) && isFast;
    }
    return isFast ? EXIT_SUCCESS : kTooSlow;
}

}  // namespace

}  // namespace quillet::bench

int main(int argc, char** argv) {
    try {
        return quillet::bench::run(argc > 1 ? std::stoul(argv[1]) : 9);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "quillet-link-bench: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
