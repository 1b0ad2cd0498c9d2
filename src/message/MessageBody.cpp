#include "message/MessageBody.h"

#include <QImage>
#include <QPalette>
#include <QScrollBar>

#include "message/BodyText.h"
#include "message/Picture.h"
#include "message/Texts.h"

#include "platform/extension/StyledText.h"

namespace quillet::message {

namespace {

constexpr std::size_t kLongestHtml = std::size_t{1} << 20U;          // bytes
constexpr std::size_t kLongestPlain = std::size_t{1} << 20U;         // bytes
constexpr std::size_t kLongestLinkedText = std::size_t{128} << 10U;  // bytes
constexpr std::size_t kLongestEasyText = std::size_t{16} << 10U;     // shown in a moment
// For a long word without a break the toolkit's work is the square of its length.
constexpr qsizetype kLongestLine = 1000;  // characters
constexpr int kWidestPicture = 600;       // points

QString beginningOf(const std::string& text, std::size_t longest) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(std::min(text.size(), longest)));
}

QString withShortLines(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        qsizetype start = 0;
        do {
            lines.append(line.mid(start, kLongestLine));
            start += kLongestLine;
        } while (start < line.size());
    }
    return lines.join(QLatin1Char('\n'));
}

// In place of a picture that is not shown.
QImage nothing() {
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

}  // namespace

MessageBody::MessageBody(const ParsedMessage& message, ShownForm form)
    : message_(message), isCut_(message.isCut) {
    setAccessibleName(localized("Message"));
    setOpenLinks(false);
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(12);
    if (form == ShownForm::Whole && !message.html.empty()) {
        showHtml();
    } else {
        showText(form);
    }
}

void MessageBody::showHtml() {
    // Most HTML names some of its colours and takes the others for those of paper.
    QPalette paper = palette();
    paper.setColor(QPalette::Base, Qt::white);
    paper.setColor(QPalette::Text, Qt::black);
    paper.setColor(QPalette::Link, QColor(0x1a, 0x5f, 0xb4));
    setPalette(paper);
    isCut_ = isCut_ || message_.html.size() > kLongestHtml;
    setHtml(beginningOf(message_.html, kLongestHtml));
}

void MessageBody::showText(ShownForm form) {
    const std::string text =
        message_.plain.empty() ? plainTextOfHtml(message_.html) : message_.plain;
    if (form == ShownForm::Whole && text.size() <= kLongestLinkedText) {
        setHtml(QString::fromStdString(platform::StyledText::withLinks(text).htmlRepresentation()));
        return;
    }
    const std::size_t longest = form == ShownForm::Whole ? kLongestPlain : kLongestEasyText;
    isCut_ = isCut_ || text.size() > longest;
    setPlainText(withShortLines(beginningOf(text, longest)));
}

void MessageBody::showEvent(QShowEvent* event) {
    QTextBrowser::showEvent(event);
    // It scrolls to its invisible cursor, which stands below a picture in the first line.
    verticalScrollBar()->setValue(0);
}

QVariant MessageBody::loadResource(int type, const QUrl& name) {
    // What is answered with nothing at all the toolkit would look for on the disk itself.
    if (type != QTextDocument::ImageResource) {
        return QByteArray("");
    }
    const auto picture = name.scheme() == QLatin1String("cid")
                             ? message_.pictures.find(name.path().toStdString())
                             : message_.pictures.end();
    if (picture == message_.pictures.end()) {
        return nothing();
    }
    const QImage image = pictureFrom(message_.attachments[picture->second].content, kWidestPicture);
    return image.isNull() ? nothing() : image;
}

}  // namespace quillet::message
