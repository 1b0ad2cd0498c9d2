#pragma once

#include <cstdio>
#include <cstdlib>

namespace quillet::fuzz {

// Ends the program if something is not true, which makes the input a finding.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace quillet::fuzz
