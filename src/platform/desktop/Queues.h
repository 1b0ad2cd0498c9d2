#pragma once

#include <chrono>

#include "platform/base/Queue.h"

namespace quillet::platform {

// The queue of the main thread: runs blocks one at a time, in order, from the event loop, and never
// inside another block, even if that runs an event loop. A block that is added before there is an
// event loop waits for it. Any thread.
Queue& mainQueue();

// The queue of background priority: runs blocks on worker threads of lowest priority. If the system
// refuses the very first thread, a block runs at once on the thread that adds it. Any thread.
Queue& backgroundQueue();

// Waits, before the program ends, until every block of the background queue has run. Returns false
// if some still run after `limit`: one may wait for a lock that another program holds.
bool drainBackgroundQueue(std::chrono::milliseconds limit = std::chrono::minutes(1));

}  // namespace quillet::platform
