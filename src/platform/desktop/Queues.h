#pragma once

#include <chrono>

#include "platform/base/Queue.h"

namespace quillet::platform {

// The queue of the main thread: runs blocks one at a time, in the order given, from the event
// loop; none inside another one, also where that runs an event loop. A block given before there is
// an event loop waits for it.
Queue& mainQueue();

// The global queue of background priority: runs blocks on worker threads of lowest priority. Where
// the system refuses the very first thread, a block runs at once on the thread that gives it.
Queue& backgroundQueue();

// Waits until every block given to the background queue so far has run; for the end of the program.
// False where some still run after `limit`: one may wait for a lock that another program holds.
bool drainBackgroundQueue(std::chrono::milliseconds limit = std::chrono::minutes(1));

}  // namespace quillet::platform
