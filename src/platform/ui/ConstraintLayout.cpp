#include "platform/ui/ConstraintLayout.h"

#include <QWidget>
#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "platform/base/Exception.h"
#include "platform/presentation/LayoutConstraint.h"
#include "platform/ui/ConstraintSolver.h"
#include "platform/ui/VisualFormat.h"

namespace quillet::platform {

namespace {

// The first two positions of a solver are the container's edges. Two for each view follow.
constexpr ConstraintSolver::Position kNearEdge = 0;
constexpr ConstraintSolver::Position kFarEdge = 1;

// The priority of a view's wish not to be larger than its size hint.
constexpr int kHugging = 250;

bool demandBounds(ConstraintSolver& solver,
                  ConstraintSolver::Position from,
                  ConstraintSolver::Position to,
                  const LengthBounds& bounds) {
    return std::all_of(bounds.begin(), bounds.end(), [&](const LengthBound& bound) {
        return (bound.relation == Relation::AtMost ||
                solver.demandAtLeast(from, to, bound.points)) &&
               (bound.relation == Relation::AtLeast || solver.demandAtMost(from, to, bound.points));
    });
}

// `views` are the near edges of the format's views. Returns false for a contradiction.
bool demandChain(ConstraintSolver& solver,
                 const VisualFormat& format,
                 const std::vector<ConstraintSolver::Position>& views) {
    bool holds =
        !format.leadingGap || demandBounds(solver, kNearEdge, views.front(), *format.leadingGap);
    for (std::size_t i = 0; holds && i < views.size(); ++i) {
        const ConstraintSolver::Position far = views[i] + 1;
        holds =
            demandBounds(solver, views[i], far, format.views[i].size) &&
            (i == format.gaps.size() || demandBounds(solver, far, views[i + 1], format.gaps[i]));
    }
    return holds && (!format.trailingGap ||
                     demandBounds(solver, views.back() + 1, kFarEdge, *format.trailingGap));
}

// Adds the two edges of a view or of the container; returns the near one. The far one follows it.
ConstraintSolver::Position addEdges(ConstraintSolver& solver) {
    const ConstraintSolver::Position near = solver.addPosition();
    static_cast<void>(solver.demandAtLeast(near, solver.addPosition(), 0));
    return near;
}

}  // namespace

struct ConstraintLayout::State {
    struct View {
        std::unique_ptr<QLayoutItem> item;
        ConstraintSolver::Position near;  // its near edge, on both axes
        int compressionResistance = kDefaultCompressionResistance;
        std::shared_ptr<LayoutConstraint> height = nullptr;

        ConstraintSolver::Position far() const { return near + 1; }
    };

    State() { std::for_each(solvers.begin(), solvers.end(), addEdges); }

    std::vector<View> views;
    std::array<ConstraintSolver, 2> solvers;  // one for each axis

    View* viewOf(const QWidget* widget);
    ConstraintSolver fitted(Axis axis) const;
    void wishSizeHints(Axis axis, ConstraintSolver& solver) const;
    std::vector<double> places(Axis axis, int length) const;
};

ConstraintLayout::State::View* ConstraintLayout::State::viewOf(const QWidget* widget) {
    const auto found = std::find_if(views.begin(), views.end(), [widget](const View& view) {
        return view.item->widget() == widget;
    });
    return found == views.end() ? nullptr : &*found;
}

// The constraints of an axis, with the present heights of the views that follow a constraint.
ConstraintSolver ConstraintLayout::State::fitted(Axis axis) const {
    ConstraintSolver result = solvers.at(static_cast<std::size_t>(axis));
    for (const View& view : views) {
        if (axis == Axis::Vertical && view.height) {
            result.wish(view.near, view.far(), view.height->presentedConstant());
        }
    }
    return result;
}

void ConstraintLayout::State::wishSizeHints(Axis axis, ConstraintSolver& solver) const {
    struct Wish {
        int priority;
        int hint;
        const View* view;
        Relation relation;
    };
    std::vector<Wish> wishes;
    for (const View& view : views) {
        const QSize hint = view.item->widget()->sizeHint();
        const int length = axis == Axis::Horizontal ? hint.width() : hint.height();
        if (length >= 0) {
            wishes.push_back({view.compressionResistance, length, &view, Relation::AtLeast});
            wishes.push_back({kHugging, length, &view, Relation::AtMost});
        }
    }
    std::stable_sort(wishes.begin(), wishes.end(), [](const Wish& a, const Wish& b) {
        return a.priority != b.priority ? a.priority > b.priority : a.hint < b.hint;
    });
    for (const Wish& wish : wishes) {
        if (wish.relation == Relation::AtLeast) {
            solver.wishAtLeast(wish.view->near, wish.view->far(), wish.hint);
        } else {
            solver.wishAtMost(wish.view->near, wish.view->far(), wish.hint);
        }
    }
}

std::vector<double> ConstraintLayout::State::places(Axis axis, int length) const {
    ConstraintSolver result = fitted(axis);
    result.wish(kNearEdge, kFarEdge, length);
    wishSizeHints(axis, result);
    return result.solution(kNearEdge);
}

ConstraintLayout::ConstraintLayout(QWidget* parent)
    : QLayout(parent), state_(std::make_unique<State>()) {
    setContentsMargins(0, 0, 0, 0);
}

ConstraintLayout::~ConstraintLayout() {
    for (const State::View& view : state_->views) {
        if (view.height) {
            view.height->setObserver({});
        }
    }
}

void ConstraintLayout::addConstraints(std::string_view visualFormat, ViewsByName views) {
    const VisualFormat format = parseVisualFormat(visualFormat);
    const std::string quoted = "layout string \"" + std::string(visualFormat) + "\"";
    std::array<ConstraintSolver, 2> solvers = state_->solvers;
    std::vector<std::pair<QWidget*, ConstraintSolver::Position>> added;
    std::vector<ConstraintSolver::Position> chain;
    for (const VisualFormat::View& view : format.views) {
        const auto* named = std::find_if(views.begin(), views.end(), [&view](const auto& pair) {
            return pair.first == view.name;
        });
        if (named == views.end() || named->second == nullptr || named->second == parentWidget()) {
            throw Exception(quoted + " names the unknown view \"" + view.name + "\"");
        }
        QWidget* widget = named->second;
        if (const State::View* known = state_->viewOf(widget)) {
            chain.push_back(known->near);
            continue;
        }
        auto twice = std::find_if(added.begin(), added.end(), [widget](const auto& pair) {
            return pair.first == widget;
        });
        if (twice == added.end()) {
            addEdges(solvers[0]);
            twice = added.insert(twice, {widget, addEdges(solvers[1])});
        }
        chain.push_back(twice->second);
    }
    if (!demandChain(solvers.at(static_cast<std::size_t>(format.axis)), format, chain)) {
        throw Exception(quoted + " contradicts the strings before it");
    }
    state_->solvers = std::move(solvers);
    for (const auto& [widget, near] : added) {
        addChildWidget(widget);
        state_->views.push_back({std::make_unique<QWidgetItem>(widget), near});
    }
    update();
}

void ConstraintLayout::addHeightConstraint(QWidget* view,
                                           std::shared_ptr<LayoutConstraint> constraint) {
    State::View* known = state_->viewOf(view);
    if (known == nullptr || constraint == nullptr) {
        throw Exception("a height constraint needs a view that a layout string names");
    }
    if (known->height) {
        known->height->setObserver({});
    }
    constraint->setObserver([this] { update(); });
    known->height = std::move(constraint);
    update();
}

void ConstraintLayout::setCompressionResistance(QWidget* view, int priority) {
    if (State::View* known = state_->viewOf(view)) {
        known->compressionResistance = priority;
        update();
    }
}

void ConstraintLayout::addItem(QLayoutItem* item) {
    addEdges(state_->solvers[0]);
    state_->views.push_back({std::unique_ptr<QLayoutItem>(item), addEdges(state_->solvers[1])});
}

int ConstraintLayout::count() const {
    return static_cast<int>(state_->views.size());
}

QLayoutItem* ConstraintLayout::itemAt(int index) const {
    const bool inside = index >= 0 && index < count();
    return inside ? state_->views[static_cast<std::size_t>(index)].item.get() : nullptr;
}

QLayoutItem* ConstraintLayout::takeAt(int index) {
    if (itemAt(index) == nullptr) {
        return nullptr;
    }
    const auto taken = state_->views.begin() + index;
    if (taken->height) {
        taken->height->setObserver({});
    }
    QLayoutItem* item = taken->item.release();
    state_->views.erase(taken);
    return item;
}

QSize ConstraintLayout::sizeHint() const {
    const auto length = [this](Axis axis) {
        ConstraintSolver solver = state_->fitted(axis);
        state_->wishSizeHints(axis, solver);
        // Views that no string ties to the far edge should lie inside the container too.
        for (const State::View& view : state_->views) {
            solver.wishAtLeast(view.far(), kFarEdge, 0);
        }
        return static_cast<int>(std::lround(solver.least(kNearEdge, kFarEdge)));
    };
    return {length(Axis::Horizontal), length(Axis::Vertical)};
}

QSize ConstraintLayout::minimumSize() const {
    const auto length = [this](Axis axis) {
        return static_cast<int>(std::lround(state_->fitted(axis).least(kNearEdge, kFarEdge)));
    };
    return {length(Axis::Horizontal), length(Axis::Vertical)};
}

void ConstraintLayout::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    const std::vector<double> xs = state_->places(Axis::Horizontal, rect.width());
    const std::vector<double> ys = state_->places(Axis::Vertical, rect.height());
    const bool mirrored =
        parentWidget() != nullptr && parentWidget()->layoutDirection() == Qt::RightToLeft;
    for (const State::View& view : state_->views) {
        // Rounding edges instead of sizes lets adjacent views touch on the screen.
        const auto left = static_cast<int>(std::lround(xs[view.near]));
        const auto right = static_cast<int>(std::lround(xs[view.far()]));
        const auto top = static_cast<int>(std::lround(ys[view.near]));
        const auto bottom = static_cast<int>(std::lround(ys[view.far()]));
        const int x = mirrored ? rect.width() - right : left;
        view.item->widget()->setGeometry(
            {rect.x() + x, rect.y() + top, right - left, bottom - top});
    }
}

}  // namespace quillet::platform
