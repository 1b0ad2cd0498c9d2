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
// "H:|-(35)-[fromField]-(>=10)-[dateField]" (the notation is described in VisualFormat.h). All
// lengths are points. Every string is a set of difference constraints, solved exactly per axis. In
// a right-to-left layout direction the horizontal axis is mirrored.
//
// Where the strings leave a size open, views take their size hint, as near as the strings allow:
// those that resist compression more come first, and among equals the one with the smaller hint.
// So of a long text and a short one in the same line the long one gives way. A hint below 0 is no
// hint. Where the container is smaller or larger than the strings allow, the children are placed
// as in the nearest size they do allow, from the leading edge and the top.
//
// A child is added to the layout by being named in a string. A child that is taken out leaves its
// edges in place for the others. Main thread only.
class ConstraintLayout : public QLayout {
    Q_OBJECT

public:
    static constexpr int kDefaultCompressionResistance = 750;
    static constexpr int kDefaultHugging = 250;

    explicit ConstraintLayout(QWidget* parent);
    ~ConstraintLayout() override;

    // Raises platform::Exception naming the string when it cannot be read, names an unknown view
    // or contradicts the strings before it; the layout is then as it was.
    void addConstraints(std::string_view visualFormat, ViewsByName views);

    // Makes the view's height follow constraint.presentedConstant(), as near as the strings allow.
    void addHeightConstraint(QWidget* view, std::shared_ptr<LayoutConstraint> constraint);

    // How hard the view resists being smaller than its size hint (higher resists more), and how
    // hard it resists being larger.
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

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillet::platform
