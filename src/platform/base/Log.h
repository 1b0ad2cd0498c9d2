#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quillet::platform {

// The platform log: one line a call, without levels. Any thread.
class Log {
public:
    using Sink = std::function<void(const std::string& line)>;

    // Writes formatText(format, arguments) as one line. It goes to standard error, which the
    // session's journal keeps (see writeErrorLine).
    static void write(std::string_view format,
                      std::initializer_list<std::string_view> arguments = {});

    // Sends every further line to `sink` instead (an empty sink: back to standard error) and
    // returns the sink replaced. The sink gets the line as it was formed and is called with the
    // log's lock held, so it must not write to the log.
    static Sink setSink(Sink sink);
};

}  // namespace quillet::platform
