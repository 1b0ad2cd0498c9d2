#include <gmock/gmock.h>
#include <random>

#include "platform/foundation/Exception.h"
#include "platform/ui/ConstraintSolver.h"
#include "platform/ui/VisualFormat.h"

namespace quillet::test {
namespace {

using platform::ConstraintSolver;
using platform::LengthBounds;
using platform::Relation;

// "=35" for exactly 35 points, ">10<20" for several bounds, "" for open.
std::string describe(const LengthBounds& bounds) {
    std::string text;
    for (const platform::LengthBound& bound : bounds) {
        const char* sign = bound.relation == Relation::Equal     ? "="
                           : bound.relation == Relation::AtLeast ? ">"
                                                                 : "<";
        text += sign + std::to_string(bound.points);
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

std::string describe(const platform::VisualFormat& format) {
    std::string text = format.axis == platform::Axis::Vertical ? "V " : "H ";
    text += format.leadingGap ? "|" + describe(*format.leadingGap) + " " : "";
    for (std::size_t i = 0; i < format.views.size(); ++i) {
        text += i > 0 ? " " + describe(format.gaps[i - 1]) + " " : "";
        text += format.views[i].name + "(" + describe(format.views[i].size) + ")";
    }
    return text + (format.trailingGap ? " " + describe(*format.trailingGap) + "|" : "");
}

TEST(VisualFormat, SaysWhatTheStringSays) {
    const std::pair<const char*, const char*> cases[] = {
        {"H:|-(35)-[from]-(>=10)-[date]", "H |=35 from() >10 date()"},
        {"V:|-(0)-[line(1)]", "V |=0 line(=1)"},
        {"H:[date]-(20)-|", "H date() =20|"},
        {"[control(>=1)]", "H control(>1)"},
        {"V:[a(==4.5)]-(<=7)-[b]", "V a(=4.5) <7 b()"},
        {"H:|-[a(>=11,<=21)]-[b2]-12-[_c]-|", "H |=20 a(>11<21) =8 b2() =12 _c() =20|"},
        {"H:|[a][b]|", "H |=0 a() =0 b() =0|"},
        {"H:|-(-5)-[a]", "H |=-5 a()"},
    };
    for (const auto& [text, expected] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(describe(platform::parseVisualFormat(text)), expected);
    }
}

TEST(VisualFormat, NamesTheStringAndThePlaceOfWhatCannotBeRead) {
    struct Case {
        std::string text;
        std::size_t offset;
    };
    const Case cases[] = {
        {"", 0},         {"H:", 2},           {"H:|", 3},        {"D:[a]", 0},
        {"[]", 1},       {"[1a]", 1},         {"[a", 2},         {"[a(]", 3},
        {"[a(10]", 5},   {"[a(>10)]", 3},     {"[a()]", 3},      {"[a]-", 4},
        {"[a]-(5)", 7},  {"[a]-(5)-", 8},     {"[a]--5-[b]", 4}, {"[a]|x", 4},
        {"[a] [b]", 3},  {"[a(10@5)]", 5},    {"[a(nan)]", 3},   {"[a(1e9999)]", 4},
        {"[a(inf)]", 3}, {"[a(2000000)]", 3}, {"[a(==b)]", 5},   {"[\xC3\xA4]", 1},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.text);
        try {
            platform::parseVisualFormat(test.text);
            ADD_FAILURE() << "was read";
        } catch (const platform::Exception& exception) {
            EXPECT_THAT(exception.description(),
                        testing::StartsWith("layout string \"" + test.text + "\", offset " +
                                            std::to_string(test.offset) + ": expected "));
        }
    }
}

// Whether differences can hold, told by looking for a cycle that pushes a position past itself.
class PlainSolver {
public:
    explicit PlainSolver(std::size_t count) : count_(count) {}

    bool demandAtLeast(std::size_t from, std::size_t to, double distance) {
        demands_.push_back({from, to, distance});
        if (!places()) {
            demands_.pop_back();
            return false;
        }
        return true;
    }

    bool holds(const std::vector<double>& places) const {
        return std::all_of(demands_.begin(), demands_.end(), [&places](const Demand& demand) {
            return places[demand.to] - places[demand.from] >= demand.distance;
        });
    }

private:
    struct Demand {
        std::size_t from, to;
        double distance;
    };

    bool places() const {
        std::vector<double> places(count_, 0.0);
        for (std::size_t round = 0; round <= count_; ++round) {
            if (holds(places)) {
                return true;
            }
            for (const Demand& demand : demands_) {
                places[demand.to] =
                    std::max(places[demand.to], places[demand.from] + demand.distance);
            }
        }
        return false;
    }

    std::size_t count_;
    std::vector<Demand> demands_;
};

TEST(ConstraintSolver, TakesAndRefusesWhatASlowSolverTakesAndRefuses) {
    std::mt19937 random(7);
    std::size_t refused = 0;
    for (int round = 0; round < 200; ++round) {
        constexpr std::size_t kPositions = 6;
        ConstraintSolver solver;
        for (std::size_t i = 0; i < kPositions; ++i) {
            solver.addPosition();
        }
        PlainSolver plain(kPositions);
        for (int demand = 0; demand < 20; ++demand) {
            const std::size_t from = random() % kPositions;
            const std::size_t to = random() % kPositions;
            const double distance = static_cast<double>(random() % 41) - 20;
            const bool holds = plain.demandAtLeast(from, to, distance);
            ASSERT_EQ(solver.demandAtLeast(from, to, distance), holds) << round;
            refused += holds ? 0 : 1;
        }
        const std::vector<double> places = solver.solution(0);
        EXPECT_EQ(places.front(), 0);
        EXPECT_TRUE(plain.holds(places)) << round;
    }
    EXPECT_GT(refused, 100U);
}

}  // namespace
}  // namespace quillet::test
