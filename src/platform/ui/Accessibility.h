#pragma once

namespace quillet::platform {

// Makes the views of this kit known to screen readers. Called by their constructors; every call
// but the first does nothing. Main thread only.
void installAccessibility();

}  // namespace quillet::platform
