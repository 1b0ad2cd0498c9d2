#pragma once

namespace quillet::bench {

// Most resident memory that the process ever had, in KiB.
long peakMemory();

}  // namespace quillet::bench
