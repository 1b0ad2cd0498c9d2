#include "views/Theme.h"

namespace quillet {

namespace {

constexpr float kSeparatorAlpha = 0.2F;
constexpr float kDateAlpha = 0.4F;

constexpr float kBlack = 0;
constexpr float kDarkGray = 1.0F / 3;
constexpr float kLightGray = 2.0F / 3;
constexpr float kWhite = 1;

QColor gray(float whiteness, float alpha) {
    return QColor::fromRgbF(whiteness, whiteness, whiteness, alpha);
}

Theme makeDark() {
    return Theme{.senderText = gray(kWhite, 0.85F),
                 .dateText = gray(kWhite, kDateAlpha),
                 .subjectText = gray(kWhite, 0.55F),
                 .separator = gray(kWhite, kSeparatorAlpha),
                 .selection = QColor(),
                 .keyboardFocus = gray(kWhite, 0.06F),
                 .iconTint = QColor(),
                 .panelBackground = QColor(0x2A, 0x2A, 0x2D),
                 .panelBorder = gray(kWhite, 0.13F),
                 .panelShadow = gray(kBlack, 0.42F)};
}

Theme makeLight() {
    return Theme{.senderText = gray(kDarkGray, 1),
                 .dateText = gray(kDarkGray, kDateAlpha),
                 .subjectText = gray(kDarkGray, 1),
                 .separator = gray(kDarkGray, kSeparatorAlpha),
                 .selection = gray(kLightGray, 0.3F),
                 .keyboardFocus = gray(kLightGray, 0.15F),
                 .iconTint = gray(kBlack, 1),
                 .panelBackground = QColor(0xF5, 0xF5, 0xF7),
                 .panelBorder = gray(kBlack, 0.12F),
                 .panelShadow = gray(kBlack, 0.22F)};
}

}  // namespace

const Theme& Theme::of(bool legacyDarkBackground) {
    static const Theme dark = makeDark();
    static const Theme light = makeLight();
    return legacyDarkBackground ? dark : light;
}

}  // namespace quillet
