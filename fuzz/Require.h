#pragma once

#include <cstdio>
#include <cstdlib>

namespace quillet::fuzz {

// Ends the program, and so makes a finding of the input, where something does not hold.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "Does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace quillet::fuzz
