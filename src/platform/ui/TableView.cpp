#include "platform/ui/TableView.h"

#include <QAbstractButton>
#include <QLayout>
#include <QPixmap>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "platform/presentation/AnimationContext.h"
#include "platform/ui/Accessibility.h"
#include "platform/ui/ImageButton.h"
#include "platform/ui/TableViewState.h"

namespace quillet::platform {

namespace {

// Nobody can have aimed at a row that has stood still for less.
constexpr std::chrono::milliseconds kTimeToSee{200};

// A reused cell has the geometry of its old place until its layouts run.
void activateLayouts(QWidget* view) {
    for (QLayout* layout : view->findChildren<QLayout*>()) {
        layout->activate();
    }
}

// Draws a view without the background of its parents.
QPixmap pictureOf(QWidget* view) {
    const double ratio = view->devicePixelRatioF();
    QPixmap picture((QSizeF(view->size()) * ratio).toSize());
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    view->render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
    return picture;
}

}  // namespace

TableView::TableView(QWidget* parent)
    : QWidget(parent), state_(std::make_unique<TableViewState>()) {
    installAccessibility();
    state_->announcement = new QTimer(this);
    state_->announcement->setSingleShot(true);
    connect(state_->announcement, &QTimer::timeout, this, [this] { announceCurrentRow(); });
}

TableView::~TableView() = default;

void TableView::setDelegate(std::weak_ptr<TableDelegate> delegate) {
    state_->delegate = std::move(delegate);
}

void TableView::setClock(Clock clock) {
    state_->clock = std::move(clock);
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
        tellScreenReaders(selected, QAccessible::Selection);
    }
}

void TableView::clickRow(std::size_t row) {
    if (row >= state_->rows.size() || static_cast<std::ptrdiff_t>(row) == state_->selected) {
        return;
    }
    setSelectedRow(static_cast<std::ptrdiff_t>(row));
    if (const auto delegate = state_->delegate.lock()) {
        delegate->tableViewSelectionDidChange();
    }
}

bool TableView::standsStill(qsizetype row) const {
    if (!state_->hasRow(row)) {
        return false;
    }
    const auto index = static_cast<std::size_t>(row);
    // At the very end of a slide the rows are already drawn at their places.
    const bool moves = isAnimating() && index >= state_->movingFrom && yetToMove() > 0;
    return !moves && state_->clock() - state_->rows[index].changed >= kTimeToSee;
}

// The points that moving rows are drawn below their places.
long TableView::yetToMove() const {
    return std::lround((1 - state_->progress) * state_->rowHeight);
}

// The places from this row on show something else: a press there no longer counts.
void TableView::noteChangesFrom(std::size_t row) {
    const TableViewState::Time now = state_->clock();
    for (std::size_t i = row; i < state_->rows.size(); ++i) {
        state_->rows[i].changed = now;
    }
    const auto first = static_cast<std::ptrdiff_t>(row);
    if (state_->pressed >= first) {
        state_->pressed = kNoRow;
    }
    if (QAbstractButton* held = heldButton(); held != nullptr && rowOfView(held) >= first) {
        cancelPress(*held);
    }
}

void TableView::reloadData() {
    settleAnimations();
    reloadData([](std::size_t row) { return static_cast<std::ptrdiff_t>(row); });
    noteChangesFrom(0);  // any row may show something else now
}

// Whether each row keeps what it shows; others may follow them.
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
    const auto stays = [&](std::ptrdiff_t row) { return moved(row) == row ? row : kNoRow; };
    // The table holds the keyboard focus while the cells change.
    const std::ptrdiff_t focusedRow = moved(rowOfView(focusedControl()));
    const std::ptrdiff_t control = controlNumber(focusedControl());
    const std::ptrdiff_t heldRow = stays(rowOfView(heldButton()));
    const std::ptrdiff_t held = controlNumber(heldButton());
    if (control != kNoRow) {
        setFocus(Qt::OtherFocusReason);
    }
    const bool keyboardIsHere = window()->focusWidget() == this;
    const std::ptrdiff_t current = moved(state_->current);
    state_->current = current == kNoRow && keyboardIsHere ? state_->current : current;
    state_->selected = moved(state_->selected);
    state_->pressed = stays(state_->pressed);
    replaceRows(newRowOf);
    rowsChanged();
    orderControls();
    focusControl(focusedRow, control, Qt::OtherFocusReason);
    if (auto* button = qobject_cast<QAbstractButton*>(controlOfRow(heldRow, held))) {
        button->setDown(true);
    }
}

// Asks the delegate for all rows again. Rows that show the same as before count as unchanged.
void TableView::replaceRows(const RowMap& newRowOf) {
    const std::vector<TableViewState::Row> before = state_->rows;
    while (!state_->rows.empty()) {
        retireRow(state_->rows.size() - 1);
    }
    if (const auto delegate = state_->delegate.lock()) {
        const std::size_t count = delegate->numberOfRowsInTableView(*this);
        for (std::size_t row = 0; row < count; ++row) {
            appendRow(*delegate);
        }
    }
    for (std::size_t row = 0; row < std::min(before.size(), state_->rows.size()); ++row) {
        if (newRowOf(row) == static_cast<std::ptrdiff_t>(row)) {
            state_->rows[row].changed = before[row].changed;
        }
    }
    if (isAnimating()) {
        state_->slidingRow->raise();
    }
}

void TableView::appendRow(TableDelegate& delegate) {
    const std::size_t row = state_->rows.size();
    TableViewState::Row added;
    added.changed = state_->clock();
    added.view = delegate.tableView_rowViewForRow(*this, row);
    if (added.view == nullptr) {
        added.view = new TableRowView;
    }
    added.view->setParent(this);
    added.cell = delegate.tableView_viewForTableColumn_row(*this, row);
    if (added.cell != nullptr) {
        added.cell->setParent(added.view);
    }
    // Told before the row is added, because the toolkit takes the number of rows as its index.
    tellScreenReaders(added.view, QAccessible::ObjectCreated);
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

// Takes a row out of the list, keeps its cell for reuse and deletes its view. The view may be
// handling one of its own events.
void TableView::retireRow(std::size_t row) {
    const TableViewState::Row retired = state_->rows[row];
    tellScreenReaders(retired.view, QAccessible::ObjectDestroyed);
    state_->rows.erase(state_->rows.begin() + static_cast<std::ptrdiff_t>(row));
    if (retired.cell != nullptr) {
        retired.cell->hide();
        retired.cell->setParent(this);
        state_->pool.push_back(retired.cell);
    }
    retired.view->hide();
    retired.view->deleteLater();
}

// Updates everything that depends on the number of rows.
void TableView::rowsChanged() {
    state_->current = std::min(state_->current, state_->lastRow());
    setSelectedRow(state_->selected);
    setFocusPolicy(state_->rows.empty() ? Qt::NoFocus : Qt::StrongFocus);
    updateKeyboardMark();
    placeRows();
    updateGeometry();
    scrollToKeyboard();
    state_->announcement->start();
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
    noteChangesFrom(row);
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
    const auto proceed = [this](double progress) {
        state_->progress = progress;
        state_->slidingRow->setProgress(progress);
        placeRows();
    };
    state_->animation.start(
        0, 1, AnimationContext::duration(), proceed, [this] { settleAnimations(); });
}

void TableView::settleAnimations() {
    if (!isAnimating()) {
        return;
    }
    state_->animation.stop();
    if (state_->progress < 1) {
        noteChangesFrom(state_->movingFrom);  // they jump to their places
    }
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
    const long yetToMove = this->yetToMove();
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

void TableView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    noteChangesFrom(0);
}

QSize TableView::sizeHint() const {
    const double height = static_cast<double>(state_->rows.size()) * state_->rowHeight;
    return {0, static_cast<int>(std::lround(height))};
}

}  // namespace quillet::platform
