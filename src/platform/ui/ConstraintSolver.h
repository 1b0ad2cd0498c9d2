#pragma once

#include <cstddef>
#include <vector>

namespace quillet::platform {

// Positions on one axis under difference constraints: each constraint says that one position lies
// at least some distance after another. Distances may be negative.
//
// Keeps the tightest bound between every two positions, so that answers are exact and do not depend
// on the order of the constraints. Adding one costs the square of the number of positions. A value;
// not for several threads at once.
class ConstraintSolver {
public:
    using Position = std::size_t;

    Position addPosition();

    // Demands to − from ≥ distance. Returns false and changes nothing if that is a contradiction.
    [[nodiscard]] bool demandAtLeast(Position from, Position to, double distance);
    // Demands to − from ≤ distance, likewise.
    [[nodiscard]] bool demandAtMost(Position from, Position to, double distance);

    // Demand the nearest distance that is not a contradiction.
    void wishAtLeast(Position from, Position to, double distance);
    void wishAtMost(Position from, Position to, double distance);
    void wish(Position from, Position to, double distance);

    // The bounds of to − from; infinite if no constraint says anything about it.
    double least(Position from, Position to) const { return bounds_[from * count_ + to]; }
    double greatest(Position from, Position to) const { return -least(to, from); }

    // A place for every position, with `origin` at 0. Each lies as close after the origin as the
    // constraints allow. A position without a lower bound lies at 0, or as close to it as allowed.
    std::vector<double> solution(Position origin) const;

private:
    std::size_t count_ = 0;
    std::vector<double> bounds_;  // [from * count_ + to]; each includes what the others imply
};

}  // namespace quillet::platform
