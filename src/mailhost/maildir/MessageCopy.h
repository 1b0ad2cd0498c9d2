#pragma once

#include <functional>
#include <optional>
#include <string>

#include "mailhost/maildir/Journal.h"

#include "platform/base/Error.h"
#include "platform/base/Result.h"

namespace quillet::mailhost {

// Moves the message of an open line of the journal to another file system, by way of a copy in the
// target's "tmp". Returns the path of the moved file. After an error the message is where it was,
// and nothing of the copy is left. `shallEnd`: see Mover. Any thread.
platform::Result<std::string> moveByCopy(const Journal::Move& move,
                                         const std::function<bool()>& shallEnd);

// Whether both are regular files with the same bytes. An error if one of them cannot be read.
platform::Result<bool> haveSameContents(const std::string& one, const std::string& other);

}  // namespace quillet::mailhost
