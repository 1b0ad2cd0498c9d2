// quillet-codec-bench [ROUNDS]   measures the query codec beside GLib's and prints a table
//
// Both do the same work on the same texts, in turn. The run ends with 1 if their results differ and
// with 3 if Quillet is slower. A large draft is also written as a URL and read back.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <functional>
#include <glib.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/Timing.h"
#include "handoff/MessageUrl.h"
#include "util/RequestUtils.h"

namespace quillet::bench {

namespace {

// Does the work once and returns a number from the result that is never 0 and costs no time to get.
using Work = std::function<std::size_t()>;

struct Case {
    std::string name;
    std::size_t bytes;
    Work quillet;
    Work glib;
    bool sameResults;
};

constexpr double kShortestMeasurement = 20;  // milliseconds of the processor
constexpr std::size_t kMegabyte = 1'000'000;
constexpr std::string_view kHtml =
    "<p class=\"note\">Dear Anna,&nbsp;the report is ready: 50% done.</p>\r\n";

double processorMilliseconds() {
    return milliseconds(CLOCK_PROCESS_CPUTIME_ID);
}

// Returns the nanoseconds of one run: the mean of so many runs that the clock is exact enough.
double nanosecondsOf(const Work& work) {
    for (std::size_t runs = 1;; runs *= 4) {
        std::size_t results = 0;
        const double start = processorMilliseconds();
        for (std::size_t run = 0; run < runs; ++run) {
            results += work();
        }
        const double time = processorMilliseconds() - start;
        if (results == 0) {
            throw std::runtime_error("a run had no result");
        }
        if (time >= kShortestMeasurement) {
            return time * 1e6 / static_cast<double>(runs);
        }
    }
}

std::string repeated(std::string_view text, std::size_t bytes) {
    std::string result;
    while (result.size() < bytes) {
        result += text;
    }
    return result;
}

using GlibText = std::unique_ptr<char, void (*)(gpointer)>;
using GlibMap = std::unique_ptr<GHashTable, void (*)(GHashTable*)>;

GlibText encodedByGlib(const std::string& text) {
    return {g_uri_escape_string(text.c_str(), nullptr, FALSE), g_free};
}

GlibMap parsedByGlib(const std::string& query) {
    const auto length = static_cast<gssize>(query.size());
    return {g_uri_parse_params(query.data(), length, "&", G_URI_PARAMS_WWW_FORM, nullptr),
            g_hash_table_unref};
}

bool sameMaps(const ParameterMap& map, const GlibMap& peer) {
    const auto inPeer = [&](const ParameterMap::Entry& entry) {
        const void* value = g_hash_table_lookup(peer.get(), entry.key.c_str());
        return value != nullptr &&
               std::get<std::string>(entry.value) == static_cast<const char*>(value);
    };
    return map.entries().size() == g_hash_table_size(peer.get()) &&
           std::all_of(map.entries().begin(), map.entries().end(), inPeer);
}

Case encoding(std::string name, std::string text) {
    const auto shared = std::make_shared<const std::string>(std::move(text));
    return {std::move(name),
            shared->size(),
            [shared] { return RequestUtils::URLEncodedString(*shared).size(); },
            [shared] { return static_cast<std::size_t>(encodedByGlib(*shared).get()[0]); },
            RequestUtils::URLEncodedString(*shared) == encodedByGlib(*shared).get()};
}

// The query has no "?" before it, as GLib needs it.
Case parsing(std::string name, std::string query) {
    const auto shared = std::make_shared<const std::string>(std::move(query));
    return {std::move(name),
            shared->size(),
            [shared] { return RequestUtils::URLQueryParameters(*shared).entries().size(); },
            [shared] { return std::size_t{g_hash_table_size(parsedByGlib(*shared).get())}; },
            sameMaps(RequestUtils::URLQueryParameters(*shared), parsedByGlib(*shared))};
}

std::vector<Case> makeCases() {
    const std::string identifier = "<CAF+q=0x9aB3.20261114T234449@mail.example.org>";
    const std::string html = repeated(kHtml, kMegabyte);
    const std::string japanese = repeated("本日の会議は午後三時からです。", kMegabyte);
    std::string keys;
    for (int i = 0; i < 100'000; ++i) {
        keys.append(i == 0 ? "" : "&")
            .append("attachment_")
            .append(std::to_string(i))
            .append("=%2Ftmp");
    }
    const std::string command =
        "mail=anna%40x.example&messageid=" + RequestUtils::URLEncodedString(identifier) +
        "&folderstandardid=1";
    return {encoding("encode an identifier", identifier),
            encoding("encode 1 MB of HTML", html),
            encoding("encode 1 MB of Japanese", japanese),
            parsing("parse a command", command),
            parsing("parse a draft, HTML", "to=a&htmlBody=" + RequestUtils::URLEncodedString(html)),
            parsing("parse a draft, Japanese",
                    "to=a&plainBody=" + RequestUtils::URLEncodedString(japanese)),
            parsing("parse 100,000 keys", keys)};
}

// Returns whether Quillet is at least as fast.
bool measure(const Case& each, std::size_t rounds) {
    if (!each.sameResults) {
        throw std::runtime_error(each.name + ": the results differ");
    }
    std::vector<double> quillet;
    std::vector<double> glib;
    for (std::size_t round = 0; round < rounds; ++round) {
        quillet.push_back(nanosecondsOf(each.quillet));
        glib.push_back(nanosecondsOf(each.glib));
    }
    const double ours = median(quillet);
    const double peers = median(glib);
    std::printf("%-24s %12zu %14.3f %14.3f %9.1fx\n",
                each.name.c_str(),
                each.bytes,
                ours / 1e3,
                peers / 1e3,
                peers / ours);
    return ours <= peers;
}

void measureDraft(std::size_t rounds) {
    const std::shared_ptr<ExtensionMessage> draft = ExtensionMessage::init();
    draft->setHtmlBody(repeated(kHtml, 10 * kMegabyte));
    std::vector<double> writing;
    std::vector<double> reading;
    for (std::size_t round = 0; round < rounds; ++round) {
        const double start = processorMilliseconds();
        const platform::URL url = queryUrl(*draft, "compose").value();
        const double written = processorMilliseconds();
        const std::shared_ptr<ExtensionMessage> received = ExtensionMessageWithUrl(url);
        reading.push_back(processorMilliseconds() - written);
        writing.push_back(written - start);
        if (received->htmlBody() != draft->htmlBody()) {
            throw std::runtime_error("the draft came back another one");
        }
    }
    std::printf("A draft with 10 MB of HTML: written in %.1f ms, read in %.1f ms\n",
                median(writing),
                median(reading));
}

int run(std::size_t rounds) {
    std::printf("%-24s %12s %14s %14s %10s\n", "case", "bytes", "Quillet us", "GLib us", "faster");
    bool fast = true;
    for (const Case& each : makeCases()) {
        fast = measure(each, rounds) && fast;
    }
    measureDraft(rounds);
    return fast ? EXIT_SUCCESS : kTooSlow;
}

}  // namespace

}  // namespace quillet::bench

int main(int argc, char** argv) {
    try {
        return quillet::bench::run(argc > 1 ? std::stoul(argv[1]) : 9);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "quillet-codec-bench: %s\n", exception.what());
        return EXIT_FAILURE;
    }
}
