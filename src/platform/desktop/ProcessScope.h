#pragma once

#include <cstdint>
#include <string>

namespace quillet::platform {

// Asks systemd's manager of the user's session, if there is one, to take a program that was just
// started out of this program's unit: when that unit stops, or is limited, its other processes stay
// as they are. `program` names it for people. Does not wait. Main thread only.
void moveIntoScope(std::int64_t process, const std::string& program);

}  // namespace quillet::platform
