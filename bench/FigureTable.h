#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

#include "bench/Timing.h"

namespace quillet::bench {

// Prints a table of figures as they come, and remembers whether all of them reach their goals.
class FigureTable {
public:
    FigureTable() {
        std::printf("%-52s%10s%10s%10s%10s\n", "figure", "median", "minimum", "maximum", "at most");
    }

    void add(const char* figure, const std::vector<double>& values) { print(figure, values, "-"); }
    // The median must not be larger than `goal`.
    void add(const char* figure, const std::vector<double>& values, double goal) {
        char text[32];
        std::snprintf(text, sizeof text, "%.1f", goal);
        print(figure, values, text);
        isFast_ = isFast_ && median(values) <= goal;
    }
    bool isFast() const { return isFast_; }

private:
    static void print(const char* figure, const std::vector<double>& values, const char* goal) {
        const auto [least, most] = std::minmax_element(values.begin(), values.end());
        std::printf("%-52s%10.2f%10.2f%10.2f%10s\n", figure, median(values), *least, *most, goal);
        std::fflush(stdout);
    }

    bool isFast_ = true;
};

}  // namespace quillet::bench
