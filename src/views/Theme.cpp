#include "views/Theme.h"

namespace quillet {

namespace {

// These two alphas are single precision, unlike that of the date.
constexpr float kSeparatorAlpha = 0.2F;
constexpr float kSelectionAlpha = 0.3F;
constexpr double kDateAlpha = 0.4;

QColor white(double alpha) {
    return QColor::fromRgbF(1, 1, 1, static_cast<float>(alpha));
}

QColor black(double alpha) {
    return QColor::fromRgbF(0, 0, 0, static_cast<float>(alpha));
}

QColor gray(double whiteness, double alpha) {
    const auto level = static_cast<float>(whiteness);
    return QColor::fromRgbF(level, level, level, static_cast<float>(alpha));
}

QColor darkGray(double alpha) {
    return gray(1.0 / 3, alpha);
}

QColor lightGray(double alpha) {
    return gray(2.0 / 3, alpha);
}

Theme makeDark() {
    constexpr double kLabelAlpha = 0.85;
    constexpr double kSecondaryLabelAlpha = 0.55;
    return Theme{.senderText = white(kLabelAlpha),
                 .dateText = white(kDateAlpha),
                 .subjectText = white(kSecondaryLabelAlpha),
                 .separator = white(kSeparatorAlpha),
                 .selection = QColor(),
                 .keyboardFocus = white(0.06),
                 .iconTint = QColor(),
                 .panelBackground = QColor(0x2A, 0x2A, 0x2D),
                 .panelBorder = white(0.13),
                 .panelShadow = black(0.42)};
}

Theme makeLight() {
    return Theme{.senderText = darkGray(1),
                 .dateText = darkGray(kDateAlpha),
                 .subjectText = darkGray(1),
                 .separator = darkGray(kSeparatorAlpha),
                 .selection = lightGray(kSelectionAlpha),
                 .keyboardFocus = lightGray(0.15),
                 .iconTint = black(1),
                 .panelBackground = QColor(0xF5, 0xF5, 0xF7),
                 .panelBorder = black(0.12),
                 .panelShadow = black(0.22)};
}

}  // namespace

const Theme& Theme::of(bool legacyDarkBackground) {
    static const Theme dark = makeDark();
    static const Theme light = makeLight();
    return legacyDarkBackground ? dark : light;
}

}  // namespace quillet
