#include "message/HeaderView.h"

#include <QDateTime>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QLocale>
#include <algorithm>

#include "message/Texts.h"

namespace quillet::message {

namespace {

constexpr std::size_t kMostEntries = 100;
constexpr qsizetype kLongestEntry = 120;  // characters of a name with its address
constexpr int kHighest = 170;             // points
constexpr int kLowest = 48;

// Without its middle where it is longer: an entry ends in the address.
QString shortened(const QString& text) {
    return text.size() <= kLongestEntry
               ? text
               : text.left(kLongestEntry / 3) + QChar(0x2026) + text.right(kLongestEntry * 2 / 3);
}

QString dateText(std::int64_t seconds) {
    constexpr std::int64_t kLatest = 100'000'000'000;  // seconds; some three thousand years
    if (seconds <= -kLatest || seconds >= kLatest) {
        return {};
    }
    return QLocale().toString(QDateTime::fromSecsSinceEpoch(seconds), QLocale::ShortFormat);
}

QLabel* makeLabel(const QString& text) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    // Beside its name, even where the text runs the other way.
    label->setAlignment(Qt::AlignTop | Qt::AlignAbsolute |
                        (QGuiApplication::isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

}  // namespace

HeaderView::HeaderView(const ParsedMessage& message) {
    auto* content = new QWidget;
    lines_ = new QFormLayout(content);
    lines_->setLabelAlignment(Qt::AlignTop);
    lines_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addAddresses("From", message.from);
    addAddresses("To", message.to);
    addAddresses("Cc", message.cc);
    addAddresses("Bcc", message.bcc);
    if (message.date) {
        addLine("Date", dateText(*message.date));
    }
    addLine("Subject", QString::fromStdString(message.subject));
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

QSize HeaderView::sizeHint() const {
    // Lines that are all empty have no height that depends on the width.
    const int height = lines_->hasHeightForWidth() && width() > 0
                           ? lines_->totalHeightForWidth(viewport()->width())
                           : lines_->totalSizeHint().height();
    return {lines_->totalSizeHint().width(), std::min(height, kHighest)};
}

QSize HeaderView::minimumSizeHint() const {
    return {0, std::min(sizeHint().height(), kLowest)};
}

void HeaderView::addAddresses(const char* name, const std::vector<std::string>& entries) {
    QStringList shown;
    for (const std::string& entry : entries) {
        if (static_cast<std::size_t>(shown.size()) == kMostEntries) {
            break;
        }
        shown.append(isolated(shortened(QString::fromStdString(entry))));
    }
    if (entries.size() > kMostEntries) {
        shown.append(localized("and %@ more", QString::number(entries.size() - kMostEntries)));
    }
    addLine(name, shown.join(QStringLiteral(", ")));
}

void HeaderView::addLine(const char* name, const QString& text) {
    if (text.isEmpty()) {
        return;
    }
    auto* label = new QLabel(localized(name));
    label->setTextFormat(Qt::PlainText);
    auto* value = makeLabel(text);
    // A screen reader reads the name when the focus comes to the text.
    label->setBuddy(value);
    lines_->addRow(label, value);
}

}  // namespace quillet::message
