#pragma once

#include <QLayout>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

namespace quillet::platform {

class LayoutConstraint;

using ViewsByName = std::initializer_list<std::pair<std::string_view, QWidget*>>;

// Places the direct children of a widget by visual-format strings such as
// "H:|-(35)-[fromField]-(>=10)-[dateField]". All lengths are points. Every string is a set of
// difference constraints, solved exactly per axis; views whose width is left open take their size
// hint, and give way in the order of their compression resistance where space is short. In a
// right-to-left layout direction the horizontal axis is mirrored.
//
// A child is added to the layout by being named in a string. Main thread only.
class ConstraintLayout : public QLayout {
public:
    explicit ConstraintLayout(QWidget* parent);
    ~ConstraintLayout() override;

    // Raises platform::Exception naming the string when it cannot be read, names an unknown view
    // or contradicts the strings before it; the layout is then as it was.
    void addConstraints(std::string_view visualFormat, ViewsByName views);

    // Makes the view's height follow constraint.presentedConstant().
    void addHeightConstraint(QWidget* view, std::shared_ptr<LayoutConstraint> constraint);

    // How hard the view resists being narrower than its size hint (default 750, higher resists
    // more), and how hard it resists being wider (default 250).
    void setCompressionResistance(QWidget* view, int priority);
    void setHugging(QWidget* view, int priority);

    // QLayout
    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;
    void invalidate() override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
