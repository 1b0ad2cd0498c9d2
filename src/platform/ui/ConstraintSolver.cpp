#include "platform/ui/ConstraintSolver.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quillet::platform {

namespace {

constexpr double kUnbounded = -std::numeric_limits<double>::infinity();
// Rounding errors in sums of lengths such as 0.1 stay below this.
constexpr double kTolerance = 1e-6;

}  // namespace

ConstraintSolver::Position ConstraintSolver::addPosition() {
    const std::size_t grown = count_ + 1;
    std::vector<double> bounds(grown * grown, kUnbounded);
    for (std::size_t from = 0; from < count_; ++from) {
        std::copy_n(bounds_.begin() + static_cast<std::ptrdiff_t>(from * count_),
                    count_,
                    bounds.begin() + static_cast<std::ptrdiff_t>(from * grown));
    }
    bounds.back() = 0;
    bounds_ = std::move(bounds);
    return count_++;
}

bool ConstraintSolver::demandAtLeast(Position from, Position to, double distance) {
    if (distance <= least(from, to)) {
        return true;
    }
    if (distance > greatest(from, to) + kTolerance) {
        return false;
    }
    for (Position before = 0; before < count_; ++before) {
        const double reach = least(before, from) + distance;
        if (reach == kUnbounded) {
            continue;
        }
        for (Position after = 0; after < count_; ++after) {
            double& bound = bounds_[before * count_ + after];
            bound = std::max(bound, reach + least(to, after));
        }
    }
    return true;
}

bool ConstraintSolver::demandAtMost(Position from, Position to, double distance) {
    return demandAtLeast(to, from, -distance);
}

void ConstraintSolver::wishAtLeast(Position from, Position to, double distance) {
    static_cast<void>(demandAtLeast(from, to, std::min(distance, greatest(from, to))));
}

void ConstraintSolver::wishAtMost(Position from, Position to, double distance) {
    static_cast<void>(demandAtMost(from, to, std::max(distance, least(from, to))));
}

void ConstraintSolver::wish(Position from, Position to, double distance) {
    wishAtLeast(from, to, distance);
    wishAtMost(from, to, distance);
}

std::vector<double> ConstraintSolver::solution(Position origin) const {
    ConstraintSolver pinned = *this;
    std::vector<double> places(count_, 0.0);
    for (Position position = 0; position < count_; ++position) {
        const double nearest = pinned.least(origin, position);
        places[position] =
            std::isfinite(nearest) ? nearest : std::min(0.0, pinned.greatest(origin, position));
        pinned.wish(origin, position, places[position]);
    }
    return places;
}

}  // namespace quillet::platform
