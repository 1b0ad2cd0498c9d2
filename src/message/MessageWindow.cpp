#include "message/MessageWindow.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QStandardPaths>
#include <QUrlQuery>
#include <QVBoxLayout>
#include <utility>

#include "message/AttachmentView.h"
#include "message/HeaderView.h"
#include "message/LinkOpening.h"
#include "message/MessageBody.h"
#include "message/ReplyUrl.h"
#include "message/Texts.h"

namespace quillet::message {

namespace {

constexpr QSize kUsualSize(680, 600);  // points
constexpr QSize kSmallestSize(280, 240);
constexpr int kAround = 40;               // points that a desktop may need around a window
constexpr qsizetype kLongestTitle = 120;  // characters
constexpr qsizetype kLongestStatus = 500;

QLabel* makeNote(const QString& text) {
    auto* note = new QLabel;
    note->setTextFormat(Qt::PlainText);
    note->setText(text);
    note->setWordWrap(true);
    return note;
}

QString titleOf(const ParsedMessage& message, MessageWindow::Kind kind) {
    const QString subject = message.subject.empty()
                                ? localized("No subject")
                                : QString::fromStdString(message.subject).left(kLongestTitle);
    return kind == MessageWindow::Kind::Draft
               ? localized("Draft") + QStringLiteral(" – ") + isolated(subject)
               : subject;
}

// Where a link leads, in the form in which it is shown and opened: without a user's name, which may
// look like a host, and with the host in plain letters.
// Of a mail link only those fields stay that cannot make a mail program send files.
QString targetOf(QUrl link) {
    if (link.scheme() == QLatin1String("mailto") && link.hasQuery()) {
        QUrlQuery fields;
        for (const auto& [key, value] : QUrlQuery(link).queryItems(QUrl::FullyEncoded)) {
            if (QStringList{QStringLiteral("to"),
                            QStringLiteral("cc"),
                            QStringLiteral("subject"),
                            QStringLiteral("body")}
                    .contains(key.toLower())) {
                fields.addQueryItem(key, value);
            }
        }
        link.setQuery(fields);
    }
    return link.toString(QUrl::RemoveUserInfo | QUrl::FullyEncoded);
}

}  // namespace

QString choosePathToSave(QWidget& parent, const QString& name) {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    const bool isThere = QFileInfo(folder).isDir();
    return QFileDialog::getSaveFileName(&parent,
                                        localized("Save as…"),
                                        QDir(isThere ? folder : QDir::homePath()).filePath(name),
                                        {},
                                        nullptr,
                                        // The window's process may not make folders.
                                        QFileDialog::ReadOnly);
}

MessageWindow::MessageWindow(ParsedMessage message,
                             Kind kind,
                             ShownForm form,
                             WindowActions actions)
    : message_(std::move(message)), actions_(std::move(actions)), status_(makeNote({})) {
    setWindowTitle(titleOf(message_, kind));
    auto* lines = new QVBoxLayout(this);
    lines->addWidget(new HeaderView(message_));
    addBody(*lines, form);
    if (!message_.attachments.empty()) {
        lines->addWidget(new AttachmentView(
            message_.attachments, [this](const Attachment& attachment) { save(attachment); }));
    }
    addButtons(*lines, kind);
    new QShortcut(QKeySequence(Qt::Key_Escape), this, [this] { close(); });
    setMinimumSize(kSmallestSize);
    const QSize room = screen()->availableGeometry().size() - QSize(kAround, kAround);
    resize(kUsualSize.boundedTo(room).expandedTo(kSmallestSize));
}

void MessageWindow::addBody(QVBoxLayout& lines, ShownForm form) {
    auto* body = new MessageBody(message_, form);
    if (form != ShownForm::Whole) {
        lines.addWidget(
            makeNote(localized("Shown as plain text, because it takes too long otherwise.")));
    }
    lines.addWidget(body, 1);
    if (body->isCut()) {
        lines.addWidget(makeNote(localized("Only the beginning is shown.")));
    }
    QObject::connect(
        body, &QTextBrowser::highlighted, this, [this](const QUrl& link) { tell(targetOf(link)); });
    QObject::connect(body, &QTextBrowser::anchorClicked, this, [this, body](const QUrl& link) {
        if (link.isRelative()) {
            body->scrollToAnchor(link.fragment());
        } else {
            open(targetOf(link).toStdString());
        }
    });
    body->setFocus();
}

void MessageWindow::addButtons(QVBoxLayout& lines, Kind kind) {
    auto* row = new QHBoxLayout;
    status_->setWordWrap(false);
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(status_, 1);
    if (kind == Kind::Message && !message_.replyTo.empty()) {
        auto* button = new QPushButton(localized("Reply"));
        QObject::connect(button, &QPushButton::clicked, this, [this] { reply(); });
        new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_R), this, [this] { reply(); });
        row->addWidget(button);
    }
    auto* button = new QPushButton(localized("Close"));
    QObject::connect(button, &QPushButton::clicked, this, [this] { close(); });
    row->addWidget(button);
    lines.addLayout(row);
}

void MessageWindow::reply() {
    open(replyUrl(message_));
}

void MessageWindow::open(const std::string& url) {
    if (!mayOpen(url)) {
        return;
    }
    const auto error = actions_.open(url);
    tell(error ? localized("Cannot be opened: %@", QString::fromStdString(error->description()))
               : QString());
}

void MessageWindow::save(const Attachment& attachment) {
    const QString path = actions_.choosePath(*this, QString::fromStdString(attachment.name));
    if (path.isEmpty()) {
        return;
    }
    const auto error = actions_.save(
        QFile::encodeName(QFileInfo(path).absoluteFilePath()).toStdString(), attachment.content);
    tell(error ? localized("Cannot be saved: %@", QString::fromStdString(error->description()))
               : localized("Saved: %@", isolated(path)));
}

// The start of a link tells whose it is, so its end is what may be missing.
void MessageWindow::tell(const QString& text) {
    status_->setText(text.simplified().left(kLongestStatus));
}

}  // namespace quillet::message
