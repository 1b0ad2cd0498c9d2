#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quillet::platform {

// The platform log: one line per call, without levels. Any thread.
class Log {
public:
    using Sink = std::function<void(const std::string& line)>;

    // Writes formatText(format, arguments) as one line to standard error (see writeErrorLine),
    // which the session's journal records.
    static void write(std::string_view format,
                      std::initializer_list<std::string_view> arguments = {});

    // Sends all further lines to `sink`, or to standard error again if it is empty, and returns the
    // replaced sink. The sink gets lines unchanged. It must not write to the log: it is called with
    // the log's lock held.
    static Sink setSink(Sink sink);
};

}  // namespace quillet::platform
