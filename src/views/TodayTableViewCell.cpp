#include "views/TodayTableViewCell.h"

#include <QPainter>
#include <QStringList>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/extension/Bundle.h"
#include "platform/ui/ConstraintLayout.h"
#include "platform/ui/PixelAlignment.h"
#include "views/KXTint.h"
#include "views/Metrics.h"
#include "views/Theme.h"
#include "widget/HostCommands.h"

namespace quillet {

namespace {

// In a short line the sender gives way to the date.
constexpr int kSenderResistance = 250;
constexpr int kDateResistance = 1000;

constexpr const char* kSecondLine =
    "H:|-(35)-[subjectField]-(3)-[replyButton(20)]-(8)-[archiveButton(20)]-(8)-"
    "[trashButton(20)]-(20)-|";

platform::Image mirrored(const platform::Image& image) {
    std::vector<QImage> representations = image.representations();
    for (QImage& representation : representations) {
        representation = representation.mirrored(true, false);
    }
    return platform::Image(std::move(representations));
}

// The icon of a button in a look. All rows share it, so that each file is decoded and tinted once.
// Icons are kept until the program ends; there are three, in two looks and two directions.
platform::Image iconNamed(std::string_view name,
                          const Theme& theme,
                          Qt::LayoutDirection direction = Qt::LeftToRight) {
    static std::map<std::tuple<std::string_view, const Theme*, Qt::LayoutDirection>,
                    platform::Image>
        icons;
    platform::Image& icon = icons[{name, &theme, direction}];
    if (icon.isNull()) {
        icon = KXTint::kx_imageTintedWithColor(platform::Image::named(name), theme.iconTint);
        icon = direction == Qt::RightToLeft ? mirrored(icon) : icon;
    }
    return icon;
}

}  // namespace

TodayTableViewCell::TodayTableViewCell(const QRect& frame) {
    setGeometry(frame);
}

TodayTableViewCell::TodayTableViewCell(const QRect& frame,
                                       const std::shared_ptr<TodayViewController>& /*controller*/)
    : TodayTableViewCell(frame) {}

void TodayTableViewCell::prepare(const std::shared_ptr<TodayViewController>& controller) {
    setController(controller);
    const Theme& theme = Theme::of(controller->legacyDarkBackground());

    swipingView_ = new FlippedView(rect(), this);
    fromField_ = makeField(theme.senderText);
    dateField_ = makeField(theme.dateText);
    subjectField_ = makeField(theme.subjectText);
    // Not drawn, so that the row shows through.
    subjectField_->setBackgroundColor(palette().color(QPalette::WindowText));
    archiveButton_ =
        makeButton(iconNamed("w_archive", theme), "Archive", &TodayTableViewCell::archive);
    trashButton_ = makeButton(iconNamed("w_trash", theme), "Delete", &TodayTableViewCell::trash);
    // The arrow of a reply points back, which depends on the direction of reading.
    replyButton_ = makeButton(
        iconNamed("w_reply", theme, layoutDirection()), "Reply", &TodayTableViewCell::reply);
    horizontalSeparator1_ = makeSeparator(theme);
    addConstraints();
}

platform::TextField* TodayTableViewCell::makeField(const QColor& color) {
    auto* field = new platform::TextField(swipingView_);
    field->setFontSize(Metrics::kTextSize);
    field->setTextColor(color);
    return field;
}

platform::ImageButton* TodayTableViewCell::makeButton(
    platform::Image image,
    std::string_view name,
    void (TodayTableViewCell::*action)(platform::ImageButton*)) {
    auto* button = new platform::ImageButton(swipingView_);
    button->setImage(std::move(image));
    button->setAlphaValue(Theme::kIconAlpha);
    button->setAction([this, button, action] { (this->*action)(button); });
    const QString title = QString::fromStdString(platform::Bundle::main().localizedString(name));
    button->setAccessibleName(title);
    button->setToolTip(title);
    return button;
}

FlippedView* TodayTableViewCell::makeSeparator(const Theme& theme) {
    auto* separator = new FlippedView(swipingView_);
    separator->setDrawingBlock([color = theme.separator](FlippedView& view, const QRect& dirty) {
        QPainter painter(&view);
        painter.setClipRect(dirty);
        const double height = platform::wholePixels(painter, 1);
        painter.fillRect(platform::alignedToPixels(painter, QRectF(0, 0, view.width(), height)),
                         color);
    });
    return separator;
}

void TodayTableViewCell::addConstraints() {
    const platform::ViewsByName views = {{"subjectField", subjectField_},
                                         {"fromField", fromField_},
                                         {"dateField", dateField_},
                                         {"horizontalSeparator1", horizontalSeparator1_},
                                         {"archiveButton", archiveButton_},
                                         {"trashButton", trashButton_},
                                         {"replyButton", replyButton_}};
    auto* layout = new platform::ConstraintLayout(swipingView_);
    for (const char* format : {
             "V:|-(0)-[horizontalSeparator1(1)]",
             "H:|-(35)-[horizontalSeparator1(>=1)]-(0)-|",
             "H:|-(35)-[fromField]-(>=10)-[dateField]",
             "H:[dateField]-(20)-|",
             "V:|-(10)-[fromField(20)]",
             "V:|-(10)-[dateField(20)]",
             kSecondLine,
             "V:|-(30)-[subjectField(20)]",
             "V:|-(30)-[archiveButton(20)]",
             "V:|-(30)-[trashButton(20)]",
             "V:|-(30)-[replyButton(20)]",
         }) {
        layout->addConstraints(format, views);
    }
    layout->setCompressionResistance(fromField_, kSenderResistance);
    layout->setCompressionResistance(dateField_, kDateResistance);
}

void TodayTableViewCell::PopulateExtensionMessage(
    const std::shared_ptr<ExtensionMessage>& message) {
    setMessage(message);
    subjectField_->setStringValue(message->subject().value_or(""));
    fromField_->setStringValue(message->from().value_or(""));
    dateField_->setStringValue(message->dateString().value_or(""));
}

QString TodayTableViewCell::accessibleRowName() const {
    const auto shown = message();
    if (!shown) {
        return {};
    }
    QStringList texts;
    for (const std::optional<std::string>& text :
         {shown->from(), shown->subject(), shown->dateString()}) {
        if (text && !text->empty()) {
            texts.append(QString::fromStdString(*text));
        }
    }
    return texts.join(QStringLiteral(", "));
}

void TodayTableViewCell::reply(platform::ImageButton* /*sender*/) {
    launch(ExtensionUtilities::commandReply, false);
}

void TodayTableViewCell::archive(platform::ImageButton* /*sender*/) {
    launch(ExtensionUtilities::commandArchive, true);
}

void TodayTableViewCell::trash(platform::ImageButton* /*sender*/) {
    launch(ExtensionUtilities::commandDelete, true);
}

void TodayTableViewCell::launch(std::string_view commandName, bool background) const {
    if (const auto shown = message()) {
        ExtensionUtilities::LaunchCommandForMessages({shown}, commandName, background);
    }
}

void TodayTableViewCell::resizeEvent(QResizeEvent* event) {
    TableCellView::resizeEvent(event);
    if (swipingView_ != nullptr) {
        swipingView_->setGeometry(rect());
    }
}

}  // namespace quillet
