#include "host/MessageWindow.h"

#include <QAccessibleWidget>
#include <QDateTime>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>
#include <QScreen>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "host/DraftBody.h"
#include "platform/files/Path.h"
#include "widget/HostCommands.h"

namespace quillet::host {

namespace {

constexpr int kWidth = 460;               // points
constexpr int kTitleBar = 40;             // points that a window may have around it
constexpr qsizetype kLongest = 1000;      // characters of a header that are shown
constexpr qsizetype kLongestEntry = 120;  // characters of an address or a file name
constexpr qsizetype kMostEntries = 100;

// Without its middle where it is longer: file names end in what tells their kind.
QString shortened(const QString& text, qsizetype longest) {
    return text.size() <= longest
               ? text
               : text.left(longest * 2 / 3) + QChar(0x2026) + text.right(longest / 3);
}

// An address or a file name. It runs from left to right and stays apart from what stands beside it,
// whatever script it is of. The mark is for the toolkit, which looks into the isolated text to tell
// which way the line runs.
QString entryText(const QString& text) {
    constexpr QChar kLeftToRightMark(0x200E);
    constexpr QChar kIsolate(0x2066);
    constexpr QChar kEndOfIsolate(0x2069);
    return QString(kLeftToRightMark) + kIsolate + shortened(text.simplified(), kLongestEntry) +
           kEndOfIsolate;
}

// The entries that are shown, and how many more there are.
QString listText(QStringList entries, const QString& separator) {
    const qsizetype more = entries.size() - kMostEntries;
    if (more > 0) {
        entries.erase(entries.begin() + kMostEntries, entries.end());
        entries.append(MessageWindow::tr("and %1 more").arg(more));
    }
    return entries.join(separator);
}

QLabel* makeLabel(const QString& text) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

std::string dateText(const ExtensionMessage& message) {
    constexpr double kLatest = 1e11;  // seconds; some three thousand years
    const double seconds = message.date().value_or(0);
    if (!(seconds > -kLatest && seconds < kLatest)) {
        return {};
    }
    const auto date = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(seconds));
    return QLocale().toString(date, QLocale::ShortFormat).toStdString();
}

// "a@x;b@y;" as "a@x, b@y".
QString addressList(const std::string& recipients) {
    QStringList entries =
        QString::fromStdString(recipients).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    std::transform(entries.begin(), entries.end(), entries.begin(), entryText);
    return listText(std::move(entries), QStringLiteral(", "));
}

QString sizeText(const DraftAttachment& attachment) {
    switch (attachment.state) {
        case DraftAttachment::State::Taken:
            return QLocale().formattedDataSize(static_cast<qint64>(attachment.size), 1);
        case DraftAttachment::State::Missing:
            return MessageWindow::tr("missing");
        case DraftAttachment::State::Unreadable:
            return MessageWindow::tr("cannot be read");
        case DraftAttachment::State::Foreign:
            return MessageWindow::tr("not taken: not in a staging folder of the container");
    }
    return {};
}

// A line for each.
QString attachmentList(const std::vector<DraftAttachment>& attachments) {
    QStringList lines;
    for (const DraftAttachment& attachment : attachments) {
        const std::string name = platform::Path::lastPathComponent(attachment.path);
        lines.append(entryText(QString::fromStdString(name)) + QStringLiteral(" (") +
                     sizeText(attachment) + QLatin1Char(')'));
    }
    return listText(std::move(lines), QStringLiteral("\n"));
}

// Lines that are all empty have no height that depends on the width.
int heightOf(const QLayout& lines, int width) {
    return lines.hasHeightForWidth() ? lines.totalHeightForWidth(width)
                                     : lines.totalSizeHint().height();
}

QString titleOf(const HostCommand& command) {
    if (command.draft) {
        return MessageWindow::tr("Draft – Quillet sample host");
    }
    return command.word == ExtensionUtilities::commandReply
               ? MessageWindow::tr("Reply – Quillet sample host")
               : MessageWindow::tr("Message – Quillet sample host");
}

}  // namespace

MessageWindow::MessageWindow() {
    auto* content = new QWidget;
    lines_ = new QFormLayout(content);
    setWidget(content);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(tr("Quillet sample host"));
    // To a screen reader a scroll area is no window. Its name is the title.
    QAccessible::registerAccessibleInterface(new QAccessibleWidget(this, QAccessible::Window));
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the toolkit's registry owns it
    lines_->setLabelAlignment(Qt::AlignTop);
    lines_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addNote(tr("Click a message in the Today panel to open it here."));
    resize(kWidth, heightOf(*lines_, kWidth));
}

void MessageWindow::present(const HostCommand& command, const Outcome& outcome) {
    clear();
    setWindowTitle(titleOf(command));
    if (outcome.draft) {
        addDraft(*outcome.draft);
    } else if (!outcome.message) {
        addNote(outcome.reason.empty() ? tr("This message is not in the mail store any more.")
                                       : QString::fromStdString(outcome.reason));
    } else if (command.word == ExtensionUtilities::commandReply) {
        addHeadersOfReply(*outcome.message);
    } else {
        addHeaders(*outcome.message);
    }
    present();
    verticalScrollBar()->setValue(0);
}

void MessageWindow::present() {
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    show();
    // New rows take part in the layout only once they are shown, which happens later by itself.
    for (QWidget* row : widget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        row->show();
    }
    lines_->activate();
    const int highest = screen()->availableGeometry().height() - kTitleBar;
    resize(width(), std::min(heightOf(*lines_, width()), highest));
}

void MessageWindow::addHeaders(const ExtensionMessage& message) {
    addLine(tr("From"), message.from().value_or(""));
    addLine(tr("Subject"), message.subject().value_or(""));
    addLine(tr("Date"), dateText(message));
    addLine(tr("Account"), message.account().value_or(""));
    addLine(tr("Folder"), message.folderPath().value_or(""));
    addLine(tr("Identifier"), message.messageId().value_or(""));
}

void MessageWindow::addHeadersOfReply(const ExtensionMessage& message) {
    const std::string subject = message.subject().value_or("");
    const bool isReplyAlready =
        QString::fromStdString(subject).startsWith(QStringLiteral("Re:"), Qt::CaseInsensitive);
    addLine(tr("From"), message.account().value_or(""));
    addLine(tr("To"), message.from().value_or(""));
    addLine(tr("Subject"), isReplyAlready ? subject : "Re: " + subject);
    addLine(tr("In reply to"), message.messageId().value_or(""));
}

void MessageWindow::addDraft(const Draft& draft) {
    addList(tr("To"), addressList(draft.to));
    if (!draft.cc.empty()) {
        addList(tr("Cc"), addressList(draft.cc));
    }
    if (!draft.bcc.empty()) {
        addList(tr("Bcc"), addressList(draft.bcc));
    }
    addLine(tr("Subject"), draft.subject);
    auto* body = new DraftBody(draft);
    lines_->addRow(body);
    if (body->isCut()) {
        addNote(tr("Only the beginning of the text is shown."));
    }
    if (!draft.attachments.empty()) {
        addList(tr("Attachments"), attachmentList(draft.attachments));
    }
}

void MessageWindow::addLine(const QString& name, const std::string& text) {
    addList(name, shortened(QString::fromStdString(text), kLongest));
}

void MessageWindow::addList(const QString& name, const QString& text) {
    auto* label = new QLabel(name);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    lines_->addRow(label, makeLabel(text));
}

void MessageWindow::addNote(const QString& text) {
    lines_->addRow(makeLabel(text));
}

void MessageWindow::clear() {
    while (lines_->rowCount() > 0) {
        lines_->removeRow(0);
    }
}

}  // namespace quillet::host
