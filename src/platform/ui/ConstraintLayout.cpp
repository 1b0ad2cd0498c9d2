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

ConstraintSolver::Position nearEdge(std::size_t view) {
    return 2 * view + 2;
}

ConstraintSolver::Position farEdge(std::size_t view) {
    return 2 * view + 3;
}

void demandBounds(ConstraintSolver& solver,
                  ConstraintSolver::Position from,
                  ConstraintSolver::Position to,
                  const LengthBounds& bounds,
                  std::string_view visualFormat) {
    for (const LengthBound& bound : bounds) {
        const bool holds =
            (bound.relation == Relation::AtMost || solver.demandAtLeast(from, to, bound.points)) &&
            (bound.relation == Relation::AtLeast || solver.demandAtMost(from, to, bound.points));
        if (!holds) {
            throw Exception("layout string \"" + std::string(visualFormat) +
                            "\" contradicts the strings before it");
        }
    }
}

void demandChain(ConstraintSolver& solver,
                 const VisualFormat& format,
                 const std::vector<std::size_t>& views,
                 std::string_view visualFormat) {
    if (format.leadingGap) {
        demandBounds(solver, kNearEdge, nearEdge(views.front()), *format.leadingGap, visualFormat);
    }
    for (std::size_t i = 0; i < views.size(); ++i) {
        demandBounds(
            solver, nearEdge(views[i]), farEdge(views[i]), format.views[i].size, visualFormat);
        if (i < format.gaps.size()) {
            demandBounds(
                solver, farEdge(views[i]), nearEdge(views[i + 1]), format.gaps[i], visualFormat);
        }
    }
    if (format.trailingGap) {
        demandBounds(solver, farEdge(views.back()), kFarEdge, *format.trailingGap, visualFormat);
    }
}

ConstraintSolver solverOfContainer() {
    ConstraintSolver solver;
    solver.addPosition();
    solver.addPosition();
    static_cast<void>(solver.demandAtLeast(kNearEdge, kFarEdge, 0));
    return solver;
}

void addViewEdges(ConstraintSolver& solver) {
    const ConstraintSolver::Position near = solver.addPosition();
    const ConstraintSolver::Position far = solver.addPosition();
    static_cast<void>(solver.demandAtLeast(near, far, 0));
}

}  // namespace

struct ConstraintLayout::State {
    struct View {
        QWidget* widget = nullptr;  // null after it was taken out
        std::unique_ptr<QLayoutItem> item;
        int compressionResistance = kDefaultCompressionResistance;
        std::shared_ptr<LayoutConstraint> height;
    };

    std::vector<View> views;
    std::array<ConstraintSolver, 2> solvers{solverOfContainer(), solverOfContainer()};

    static std::size_t index(Axis axis) { return axis == Axis::Horizontal ? 0 : 1; }
    const ConstraintSolver& solver(Axis axis) const { return solvers[index(axis)]; }

    View* viewOf(const QWidget* widget);
    std::size_t presentIndex(int index) const;
    void append(QWidget* widget, std::unique_ptr<QLayoutItem> item);

    ConstraintSolver fitted(Axis axis) const;
    void wishSizeHints(Axis axis, ConstraintSolver& solver) const;
    std::vector<double> places(Axis axis, int length) const;
};

ConstraintLayout::State::View* ConstraintLayout::State::viewOf(const QWidget* widget) {
    const auto found = std::find_if(
        views.begin(), views.end(), [widget](const View& view) { return view.widget == widget; });
    return found == views.end() ? nullptr : &*found;
}

// The place in `views` of the index-th view that is still in the layout, or views.size().
std::size_t ConstraintLayout::State::presentIndex(int index) const {
    std::size_t i = 0;
    for (; i < views.size(); ++i) {
        if (views[i].item && index-- == 0) {
            break;
        }
    }
    return i;
}

void ConstraintLayout::State::append(QWidget* widget, std::unique_ptr<QLayoutItem> item) {
    views.push_back({.widget = widget, .item = std::move(item), .height = {}});
}

// The constraints of an axis, with the present heights of the views that follow a constraint.
ConstraintSolver ConstraintLayout::State::fitted(Axis axis) const {
    ConstraintSolver result = solver(axis);
    for (std::size_t i = 0; axis == Axis::Vertical && i < views.size(); ++i) {
        if (views[i].height && views[i].widget != nullptr) {
            result.wish(nearEdge(i), farEdge(i), views[i].height->presentedConstant());
        }
    }
    return result;
}

void ConstraintLayout::State::wishSizeHints(Axis axis, ConstraintSolver& solver) const {
    struct Wish {
        int priority;
        int hint;
        std::size_t view;
        Relation relation;
    };
    std::vector<Wish> wishes;
    for (std::size_t i = 0; i < views.size(); ++i) {
        const QSize hint = views[i].widget != nullptr ? views[i].widget->sizeHint() : QSize();
        const int length = axis == Axis::Horizontal ? hint.width() : hint.height();
        if (length >= 0) {
            wishes.push_back({views[i].compressionResistance, length, i, Relation::AtLeast});
            wishes.push_back({kHugging, length, i, Relation::AtMost});
        }
    }
    std::stable_sort(wishes.begin(), wishes.end(), [](const Wish& a, const Wish& b) {
        return a.priority != b.priority ? a.priority > b.priority : a.hint < b.hint;
    });
    for (const Wish& wish : wishes) {
        if (wish.relation == Relation::AtLeast) {
            solver.wishAtLeast(nearEdge(wish.view), farEdge(wish.view), wish.hint);
        } else {
            solver.wishAtMost(nearEdge(wish.view), farEdge(wish.view), wish.hint);
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
    std::array<ConstraintSolver, 2> solvers = state_->solvers;
    std::vector<QWidget*> added;
    std::vector<std::size_t> chain;
    for (const VisualFormat::View& view : format.views) {
        const auto* named = std::find_if(views.begin(), views.end(), [&view](const auto& pair) {
            return pair.first == view.name;
        });
        if (named == views.end() || named->second == nullptr || named->second == parentWidget()) {
            throw Exception("layout string \"" + std::string(visualFormat) +
                            "\" names the unknown view \"" + view.name + "\"");
        }
        QWidget* widget = named->second;
        const State::View* known = state_->viewOf(widget);
        const auto twice = std::find(added.begin(), added.end(), widget);
        if (known != nullptr) {
            chain.push_back(static_cast<std::size_t>(known - state_->views.data()));
            continue;
        }
        chain.push_back(state_->views.size() + static_cast<std::size_t>(twice - added.begin()));
        if (twice == added.end()) {
            added.push_back(widget);
            std::for_each(solvers.begin(), solvers.end(), addViewEdges);
        }
    }
    demandChain(solvers[State::index(format.axis)], format, chain, visualFormat);

    state_->solvers = std::move(solvers);
    for (QWidget* widget : added) {
        addChildWidget(widget);
        state_->append(widget, std::make_unique<QWidgetItem>(widget));
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
    std::for_each(state_->solvers.begin(), state_->solvers.end(), addViewEdges);
    state_->append(item->widget(), std::unique_ptr<QLayoutItem>(item));
}

int ConstraintLayout::count() const {
    return static_cast<int>(std::count_if(state_->views.begin(),
                                          state_->views.end(),
                                          [](const State::View& view) { return !!view.item; }));
}

QLayoutItem* ConstraintLayout::itemAt(int index) const {
    const std::size_t i = state_->presentIndex(index);
    return i < state_->views.size() ? state_->views[i].item.get() : nullptr;
}

QLayoutItem* ConstraintLayout::takeAt(int index) {
    const std::size_t i = state_->presentIndex(index);
    if (i >= state_->views.size()) {
        return nullptr;
    }
    State::View& view = state_->views[i];
    view.widget = nullptr;
    if (view.height) {
        view.height->setObserver({});
        view.height.reset();
    }
    return view.item.release();
}

QSize ConstraintLayout::sizeHint() const {
    const auto length = [this](Axis axis) {
        ConstraintSolver solver = state_->fitted(axis);
        state_->wishSizeHints(axis, solver);
        // Views that no string ties to the far edge should lie inside the container too.
        for (std::size_t i = 0; i < state_->views.size(); ++i) {
            if (state_->views[i].widget != nullptr) {
                solver.wishAtLeast(farEdge(i), kFarEdge, 0);
            }
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
    for (std::size_t i = 0; i < state_->views.size(); ++i) {
        QWidget* widget = state_->views[i].widget;
        if (widget == nullptr) {
            continue;
        }
        // Rounding edges instead of sizes lets adjacent views touch on the screen.
        const auto left = static_cast<int>(std::lround(xs[nearEdge(i)]));
        const auto right = static_cast<int>(std::lround(xs[farEdge(i)]));
        const auto top = static_cast<int>(std::lround(ys[nearEdge(i)]));
        const auto bottom = static_cast<int>(std::lround(ys[farEdge(i)]));
        const int x = mirrored ? rect.width() - right : left;
        widget->setGeometry(rect.x() + x, rect.y() + top, right - left, bottom - top);
    }
}

}  // namespace quillet::platform
