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
// "H:|-(35)-[fromField]-(>=10)-[dateField]" (VisualFormat.h describes the notation). All lengths
// are points. Every string is a set of difference constraints, solved exactly per axis. In a
// right-to-left layout direction the horizontal axis is mirrored.
//
// If the strings leave a size open, a view gets its size hint, or the nearest size that the strings
// allow. Views that resist compression more come first, then those with the smaller hint: if a long
// and a short text share a line, the long one gives way. A hint below 0 does not count. If the
// container is smaller or larger than the strings allow, the children are placed as in the nearest
// allowed size, from the leading edge and the top.
//
// Naming a child in a string adds it to the layout. The edges of a child that is taken out stay,
// because others may be placed by them. Main thread only.
class ConstraintLayout : public QLayout {
    Q_OBJECT

public:
    static constexpr int kDefaultCompressionResistance = 750;

    explicit ConstraintLayout(QWidget* parent);
    ~ConstraintLayout() override;

    // Raises platform::Exception with the string if it cannot be parsed, names an unknown view or
    // contradicts the strings before it. The layout then stays as it was.
    void addConstraints(std::string_view visualFormat, ViewsByName views);

    // Makes the view's height follow constraint.presentedConstant(), as far as the strings allow.
    // Raises platform::Exception if no string names the view.
    void addHeightConstraint(QWidget* view, std::shared_ptr<LayoutConstraint> constraint);

    // Views of a higher priority keep their size hint when space is short.
    void setCompressionResistance(QWidget* view, int priority);

    // QLayout
    void addItem(QLayoutItem* item) override;  // of a widget
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
