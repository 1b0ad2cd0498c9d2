#include "host/MessageWindow.h"

#include <QDateTime>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>

#include "host/DraftBody.h"
#include "platform/foundation/Path.h"
#include "widget/ExtensionUtilities.h"

namespace quillet::host {

namespace {

constexpr int kWidth = 460;           // points
constexpr qsizetype kLongest = 1000;  // characters of a header that are shown

QLabel* makeLabel(const QString& text) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setText(text.size() > kLongest ? text.left(kLongest) + QChar(0x2026) : text);
    label->setWordWrap(true);
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
std::string addressList(const std::string& recipients) {
    const QString list = QString::fromStdString(recipients);
    return list.split(QLatin1Char(';'), Qt::SkipEmptyParts)
        .join(QStringLiteral(", "))
        .toStdString();
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
            return MessageWindow::tr("not taken: not in the container");
    }
    return {};
}

// A line for each; line ends in a name would make lines of their own.
std::string attachmentList(const std::vector<DraftAttachment>& attachments) {
    QStringList lines;
    for (const DraftAttachment& attachment : attachments) {
        const std::string name = platform::Path::lastPathComponent(attachment.path);
        lines.append(QString::fromStdString(name).simplified() + QStringLiteral(" (") +
                     sizeText(attachment) + QLatin1Char(')'));
    }
    return lines.join(QLatin1Char('\n')).toStdString();
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

MessageWindow::MessageWindow() : lines_(new QFormLayout(this)) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(tr("Quillet sample host"));
    lines_->setLabelAlignment(Qt::AlignTop);
    lines_->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    setNote(tr("Click a message in the Today panel to open it here."));
    resize(kWidth, sizeHint().height());
}

void MessageWindow::present(const HostCommand& command, const Outcome& outcome) {
    clear();
    setWindowTitle(titleOf(command));
    if (outcome.draft) {
        addDraft(*outcome.draft);
    } else if (!outcome.message) {
        setNote(outcome.reason.empty() ? tr("This message is not in the mail store any more.")
                                       : QString::fromStdString(outcome.reason));
    } else if (command.word == ExtensionUtilities::commandReply) {
        addHeadersOfReply(*outcome.message);
    } else {
        addHeaders(*outcome.message);
    }
    present();
}

void MessageWindow::present() {
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    show();
    // New rows take part in the layout only once they are shown, which happens later by itself.
    for (QWidget* row : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        row->show();
    }
    layout()->activate();
    resize(width(), layout()->totalHeightForWidth(width()));
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
    addLine(tr("To"), addressList(draft.to));
    if (!draft.cc.empty()) {
        addLine(tr("Cc"), addressList(draft.cc));
    }
    if (!draft.bcc.empty()) {
        addLine(tr("Bcc"), addressList(draft.bcc));
    }
    addLine(tr("Subject"), draft.subject);
    lines_->addRow(new DraftBody(draft));
    if (!draft.attachments.empty()) {
        addLine(tr("Attachments"), attachmentList(draft.attachments));
    }
}

void MessageWindow::addLine(const QString& name, const std::string& text) {
    lines_->addRow(name, makeLabel(QString::fromStdString(text)));
}

void MessageWindow::setNote(const QString& text) {
    lines_->addRow(makeLabel(text));
}

void MessageWindow::clear() {
    while (lines_->rowCount() > 0) {
        lines_->removeRow(0);
    }
}

}  // namespace quillet::host
