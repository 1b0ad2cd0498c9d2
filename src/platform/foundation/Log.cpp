#include "platform/foundation/Log.h"

#include <cstdio>
#include <mutex>
#include <utility>

#include "platform/foundation/TextFormat.h"

namespace quillet::platform {

namespace {

struct State {
    std::mutex mutex;
    Log::Sink sink;
};

// Never destroyed: threads may log until the very end.
State& state() {
    static auto* const instance = new State;
    return *instance;
}

bool isControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

void writeToStandardError(std::string line) {
    for (char& character : line) {
        if (isControl(character)) {
            character = ' ';
        }
    }
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void Log::write(std::string_view format, std::initializer_list<std::string_view> arguments) {
    std::string line = formatText(format, arguments);
    const std::lock_guard lock(state().mutex);
    if (state().sink) {
        state().sink(line);
    } else {
        writeToStandardError(std::move(line));
    }
}

Log::Sink Log::setSink(Sink sink) {
    const std::lock_guard lock(state().mutex);
    return std::exchange(state().sink, std::move(sink));
}

}  // namespace quillet::platform
