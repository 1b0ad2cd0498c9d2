#include "platform/base/Log.h"

#include <mutex>
#include <utility>

#include "platform/base/StandardError.h"
#include "platform/base/TextFormat.h"

namespace quillet::platform {

namespace {

struct State {
    std::mutex mutex;
    Log::Sink sink;
};

// Never destroyed: threads may log until the process ends.
State& state() {
    static auto* const instance = new State;
    return *instance;
}

}  // namespace

void Log::write(std::string_view format, std::initializer_list<std::string_view> arguments) {
    const std::string line = formatText(format, arguments);
    const std::lock_guard lock(state().mutex);
    if (state().sink) {
        state().sink(line);
    } else {
        writeErrorLine(line);
    }
}

Log::Sink Log::setSink(Sink sink) {
    const std::lock_guard lock(state().mutex);
    return std::exchange(state().sink, std::move(sink));
}

}  // namespace quillet::platform
