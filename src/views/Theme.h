#pragma once

#include <QColor>

namespace quillet {

// The sRGB colours of one look. A view gets its look when it is built and keeps it.
struct Theme {
    QColor senderText;
    QColor dateText;
    QColor subjectText;
    QColor separator;
    QColor selection;  // invalid: the desktop's own
    QColor keyboardFocus;
    QColor iconTint;  // invalid: icons keep their own colours

    // The panel that holds the widget.
    QColor panelBackground;
    QColor panelBorder;
    QColor panelShadow;  // at its darkest, beside the panel's edge

    static const Theme& of(bool legacyDarkBackground);

    static constexpr double kIconAlpha = 0.3;
    static constexpr int kPanelCornerRadius = 14;  // points
    static constexpr int kPanelShadowRadius = 18;  // points; how far the shadow reaches
};

}  // namespace quillet
