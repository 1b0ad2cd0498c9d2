#include "platform/ui/TableView.h"

#include <QAccessible>
#include <QLayout>
#include <QPixmap>
#include <QVariantAnimation>
#include <algorithm>
#include <cmath>

#include "platform/ui/Accessibility.h"
#include "platform/ui/AnimationContext.h"
#include "platform/ui/AnimationGroup.h"
#include "platform/ui/TableViewState.h"

namespace quillet::platform {

namespace {

// A cell that was shown or hidden in another place has stale geometry until its layouts run.
void activateLayouts(QWidget* view) {
    if (view->layout() != nullptr) {
        view->layout()->activate();
    }
    for (QWidget* child : view->findChildren<QWidget*>()) {
        if (child->layout() != nullptr) {
            child->layout()->activate();
        }
    }
}

// What a view shows, without any background of the places it lies in.
QPixmap pictureOf(QWidget* view) {
    const double ratio = view->devicePixelRatioF();
    QPixmap picture((QSizeF(view->size()) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    view->render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    return picture;
}

}  // namespace

TableView::TableView(QWidget* parent) : QWidget(parent), state_(std::make_unique<State>()) {
    installAccessibility();
    state_->animation = new QVariantAnimation(this);
    state_->animation->setStartValue(0.0);
    state_->animation->setEndValue(1.0);
    state_->animation->setEasingCurve(easeInOut());
    connect(
        state_->animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
            state_->progress = value.toDouble();
            if (state_->slidingRow) {
                state_->slidingRow->setProgress(state_->progress);
            }
            placeRows();
        });
    connect(state_->animation, &QVariantAnimation::finished, this, [this] { settleAnimations(); });
}

TableView::~TableView() = default;

void TableView::setDelegate(TableDelegate* delegate) {
    state_->delegate = delegate;
}

void TableView::setRowHeight(double points) {
    state_->rowHeight = points;
    placeRows();
    updateGeometry();
}

TableCellView* TableView::reusableCell(std::string_view identifier) {
    std::vector<TableCellView*>& pool = state_->pool;
    const auto found =
        std::find_if(pool.rbegin(), pool.rend(), [identifier](const TableCellView* cell) {
            return cell->identifier() == identifier;
        });
    if (found == pool.rend()) {
        return nullptr;
    }
    TableCellView* cell = *found;
    pool.erase(std::next(found).base());
    return cell;
}

TableCellView* TableView::cellAtRow(std::size_t row) const {
    return row < state_->rows.size() ? state_->rows[row].cell : nullptr;
}

TableRowView* TableView::rowViewAtRow(std::size_t row) const {
    return row < state_->rows.size() ? state_->rows[row].view : nullptr;
}

std::ptrdiff_t TableView::rowOfView(const QWidget* view) const {
    for (std::size_t i = 0; view != nullptr && i < state_->rows.size(); ++i) {
        const TableRowView* row = state_->rows[i].view;
        if (row == view || row->isAncestorOf(view)) {
            return static_cast<std::ptrdiff_t>(i);
        }
    }
    return kNoRow;
}

double TableView::rowHeight() const {
    return state_->rowHeight;
}

std::size_t TableView::numberOfRows() const {
    return state_->rows.size();
}

std::ptrdiff_t TableView::selectedRow() const {
    return state_->selected;
}

void TableView::setSelectedRow(std::ptrdiff_t row) {
    const std::ptrdiff_t before =
        std::exchange(state_->selected, state_->hasRow(row) ? row : kNoRow);
    for (std::size_t i = 0; i < state_->rows.size(); ++i) {
        state_->rows[i].view->setSelected(static_cast<std::ptrdiff_t>(i) == state_->selected);
    }
    TableRowView* selected = rowViewAtRow(static_cast<std::size_t>(state_->selected));
    if (selected != nullptr && state_->selected != before) {
        QAccessibleEvent event(selected, QAccessible::Selection);
        QAccessible::updateAccessibility(&event);
    }
}

void TableView::clickRow(std::size_t row) {
    if (row >= state_->rows.size() || static_cast<std::ptrdiff_t>(row) == state_->selected) {
        return;
    }
    setSelectedRow(static_cast<std::ptrdiff_t>(row));
    if (state_->delegate != nullptr) {
        state_->delegate->tableViewSelectionDidChange();
    }
}

void TableView::reloadData() {
    settleAnimations();
    reloadData([](std::size_t row) { return static_cast<std::ptrdiff_t>(row); });
}

// Whether each row shows afterwards what it shows now; others may come behind them.
bool TableView::keepsItsRows(const RowMap& newRowOf) const {
    for (std::size_t row = 0; row < state_->rows.size(); ++row) {
        if (newRowOf(row) != static_cast<std::ptrdiff_t>(row)) {
            return false;
        }
    }
    return true;
}

void TableView::reloadData(const RowMap& newRowOf) {
    if (!keepsItsRows(newRowOf)) {
        settleAnimations();
    }
    const auto moved = [&](std::ptrdiff_t row) {
        return state_->hasRow(row) ? newRowOf(static_cast<std::size_t>(row)) : kNoRow;
    };
    // The keyboard focus is brought home while the cells change and then put back.
    const std::ptrdiff_t focusedRow = moved(rowOfView(focusedControl()));
    const std::ptrdiff_t control = controlNumber(focusedControl());
    if (control != kNoRow) {
        setFocus(Qt::OtherFocusReason);
    }
    const bool keyboardIsHere = window()->focusWidget() == this;
    const std::ptrdiff_t current = moved(state_->current);
    state_->current = current == kNoRow && keyboardIsHere ? state_->current : current;
    state_->selected = moved(state_->selected);
    while (!state_->rows.empty()) {
        retireRow(state_->rows.size() - 1);
    }
    const std::size_t count =
        state_->delegate != nullptr ? state_->delegate->numberOfRowsInTableView(*this) : 0;
    for (std::size_t row = 0; row < count; ++row) {
        appendRow(row);
    }
    if (isAnimating()) {
        state_->slidingRow->raise();
    }
    rowsChanged();
    orderControls();
    focusControl(focusedRow, control, Qt::OtherFocusReason);
}

void TableView::appendRow(std::size_t row) {
    State::Row added;
    added.view = state_->delegate->tableView_rowViewForRow(*this, row);
    if (added.view == nullptr) {
        added.view = new TableRowView;
    }
    added.view->setParent(this);
    added.cell = state_->delegate->tableView_viewForTableColumn_row(*this, row);
    if (added.cell != nullptr) {
        added.cell->setParent(added.view);
    }
    state_->rows.push_back(added);
    placeRows();
    if (added.cell != nullptr) {
        activateLayouts(added.cell);
        added.cell->show();
        for (QWidget* control : controlsOfRow(row)) {
            control->installEventFilter(this);
        }
    }
    added.view->show();
}

// Takes a row out of the list: its cell goes to the pool, its view away. The view may be inside one
// of its own events just now.
void TableView::retireRow(std::size_t row) {
    const State::Row retired = state_->rows[row];
    state_->rows.erase(state_->rows.begin() + static_cast<std::ptrdiff_t>(row));
    if (retired.cell != nullptr) {
        retired.cell->hide();
        retired.cell->setParent(this);
        state_->pool.push_back(retired.cell);
    }
    retired.view->hide();
    retired.view->deleteLater();
}

// Brings what depends on the number of rows up to date.
void TableView::rowsChanged() {
    state_->pressed = kNoRow;
    state_->current = std::min(state_->current, state_->lastRow());
    setSelectedRow(state_->selected);
    setFocusPolicy(state_->rows.empty() ? Qt::NoFocus : Qt::StrongFocus);
    updateKeyboardMark();
    placeRows();
    updateGeometry();
    scrollToKeyboard();
}

void TableView::removeRow(std::size_t row, RowAnimation animation) {
    settleAnimations();
    if (row >= state_->rows.size()) {
        return;
    }
    const auto removed = static_cast<std::ptrdiff_t>(row);
    if (rowOfView(focusedControl()) == removed) {
        setFocus(Qt::OtherFocusReason);
    }
    const bool slides =
        animation != RowAnimation::None && AnimationContext::duration() > 0 && isVisible();
    const QPixmap picture = slides ? pictureOf(state_->rows[row].view) : QPixmap();
    retireRow(row);
    if (state_->selected == removed) {
        state_->selected = kNoRow;
    } else if (state_->selected > removed) {
        --state_->selected;
    }
    if (state_->current > removed) {
        --state_->current;
    }
    if (slides) {
        startRemoval(row, picture, animation);
    }
    rowsChanged();
}

void TableView::startRemoval(std::size_t row, const QPixmap& picture, RowAnimation animation) {
    const auto top = static_cast<int>(std::lround(static_cast<double>(row) * state_->rowHeight));
    const auto height = static_cast<int>(std::lround(state_->rowHeight));
    const int direction = animation == RowAnimation::SlideLeft ? -1 : 1;
    state_->slidingRow = new SlidingRow(picture, QRect(0, top, width(), height), direction, this);
    state_->slidingRow->show();
    state_->movingFrom = row;
    state_->progress = 0;
    state_->animation->setDuration(AnimationContext::duration());
    state_->animation->start();
}

void TableView::settleAnimations() {
    if (!isAnimating()) {
        return;
    }
    state_->animation->stop();
    state_->progress = 1;
    state_->slidingRow->hide();
    state_->slidingRow->deleteLater();
    state_->slidingRow.clear();
    placeRows();
}

bool TableView::isAnimating() const {
    return !state_->slidingRow.isNull();
}

void TableView::placeRows() {
    const auto edge = [this](std::size_t row) {
        return std::lround(static_cast<double>(row) * state_->rowHeight);
    };
    const long yetToMove = std::lround((1 - state_->progress) * state_->rowHeight);
    for (std::size_t i = 0; i < state_->rows.size(); ++i) {
        const bool moves = isAnimating() && i >= state_->movingFrom;
        const long top = edge(i) + (moves ? yetToMove : 0);
        const QRect place(
            0, static_cast<int>(top), width(), static_cast<int>(edge(i + 1) - edge(i)));
        state_->rows[i].view->setGeometry(place);
        if (state_->rows[i].cell != nullptr) {
            state_->rows[i].cell->setGeometry(QRect(QPoint(), place.size()));
        }
    }
}

void TableView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeRows();
    scrollToKeyboard();
}

QSize TableView::sizeHint() const {
    const double height = static_cast<double>(state_->rows.size()) * state_->rowHeight;
    return {0, static_cast<int>(std::lround(height))};
}

}  // namespace quillet::platform
