#pragma once

#include <deque>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "host/HostCommand.h"
#include "platform/desktop/ApplicationService.h"

namespace quillet::host {

class MessageWindow;
using Call = platform::ApplicationCall;

// What the sample host does with calls: carries out the commands in them, one after the other and
// off the main thread, since the store's lock may be held for long; shows messages and drafts;
// writes one line of JSON for each command and each call without commands; tells the widget of
// changes. Main thread only; it outlives the blocks it gives to the queues.
class SampleHost {
public:
    // `window`: null where there is no display. `log` gets the lines.
    SampleHost(std::string dataFolder, MessageWindow* window, std::ostream& log);

    void receive(const Call& call);

    // Calls `done`, from the event loop, as soon as everything received by then is dealt with.
    void whenIdle(std::function<void()> done);

private:
    struct Request {
        double time = 0;  // of its arrival, seconds since 1970-01-01 00:00:00 UTC
        Call call;        // without its URLs
        std::string url;
        std::optional<HostCommand> command;  // none: the call has no URLs
        bool isLastOfCall = true;
    };

    // What became of the window.
    enum class Shown { No, Behind, InFront };

    void startNext();
    void finish(const Request& request, const Outcome& outcome);
    Shown show(const Request& request, const Outcome& outcome);
    void writeLine(const Request& request, const Outcome& outcome, Shown shown);

    std::string dataFolder_;
    MessageWindow* window_;
    std::ostream& log_;
    std::deque<Request> waiting_;
    bool isBusy_ = false;
    bool storeChanged_ = false;
    std::function<void()> whenIdle_;
};

}  // namespace quillet::host
