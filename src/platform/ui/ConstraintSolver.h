#pragma once

#include <cstddef>
#include <vector>

namespace quillet::platform {

// Positions on one axis under difference constraints: each says that one position lies at least
// some distance (which may be negative) behind another.
//
// Keeps, for every pair, the tightest bound that follows from all constraints, so every answer is
// exact and independent of the order in which constraints came. A constraint costs the square of
// the number of positions. A value; not for several threads at once.
class ConstraintSolver {
public:
    using Position = std::size_t;

    Position addPosition();
    std::size_t positionCount() const noexcept { return count_; }

    // Demands to − from ≥ distance. False, and nothing changed, where that contradicts.
    [[nodiscard]] bool demandAtLeast(Position from, Position to, double distance);
    // Demands to − from ≤ distance, likewise.
    [[nodiscard]] bool demandAtMost(Position from, Position to, double distance);

    // As the demands, but with the nearest distance that does not contradict.
    void wishAtLeast(Position from, Position to, double distance);
    void wishAtMost(Position from, Position to, double distance);
    void wish(Position from, Position to, double distance);

    // What the constraints say of to − from; infinite where they say nothing.
    double least(Position from, Position to) const { return bounds_[from * count_ + to]; }
    double greatest(Position from, Position to) const { return -least(to, from); }

    // A place for every position, with `origin` at 0: each as near behind the origin as it may be,
    // and at 0 (or as near as it may be) where nothing keeps it from running off before the origin.
    std::vector<double> solution(Position origin) const;

private:
    std::size_t count_ = 0;
    std::vector<double> bounds_;  // [from * count_ + to], closed under addition along paths
};

}  // namespace quillet::platform
