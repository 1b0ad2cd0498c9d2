#include "views/Theme.h"

namespace quillet {

namespace {

// These two alphas are single precision, unlike that of the date.
constexpr float kSeparatorAlpha = 0.2F;
constexpr float kSelectionAlpha = 0.3F;
constexpr double kDateAlpha = 0.4;

constexpr double kBlack = 0;
constexpr double kDarkGray = 1.0 / 3;
constexpr double kLightGray = 2.0 / 3;
constexpr double kWhite = 1;

QColor gray(double whiteness, double alpha) {
    const auto level = static_cast<float>(whiteness);
    return QColor::fromRgbF(level, level, level, static_cast<float>(alpha));
}

Theme makeDark() {
    constexpr double kLabelAlpha = 0.85;
    constexpr double kSecondaryLabelAlpha = 0.55;
    return Theme{.senderText = gray(kWhite, kLabelAlpha),
                 .dateText = gray(kWhite, kDateAlpha),
                 .subjectText = gray(kWhite, kSecondaryLabelAlpha),
                 .separator = gray(kWhite, kSeparatorAlpha),
                 .selection = QColor(),
                 .keyboardFocus = gray(kWhite, 0.06),
                 .iconTint = QColor(),
                 .panelBackground = QColor(0x2A, 0x2A, 0x2D),
                 .panelBorder = gray(kWhite, 0.13),
                 .panelShadow = gray(kBlack, 0.42)};
}

Theme makeLight() {
    return Theme{.senderText = gray(kDarkGray, 1),
                 .dateText = gray(kDarkGray, kDateAlpha),
                 .subjectText = gray(kDarkGray, 1),
                 .separator = gray(kDarkGray, kSeparatorAlpha),
                 .selection = gray(kLightGray, kSelectionAlpha),
                 .keyboardFocus = gray(kLightGray, 0.15),
                 .iconTint = gray(kBlack, 1),
                 .panelBackground = QColor(0xF5, 0xF5, 0xF7),
                 .panelBorder = gray(kBlack, 0.12),
                 .panelShadow = gray(kBlack, 0.22)};
}

}  // namespace

const Theme& Theme::of(bool legacyDarkBackground) {
    static const Theme dark = makeDark();
    static const Theme light = makeLight();
    return legacyDarkBackground ? dark : light;
}

}  // namespace quillet
