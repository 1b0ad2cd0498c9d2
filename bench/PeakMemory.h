#pragma once

namespace quillet::bench {

// Returns the most resident memory that the process ever had, in KiB; 0 if it is not known.
long peakMemory();

}  // namespace quillet::bench
