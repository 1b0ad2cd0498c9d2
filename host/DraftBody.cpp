#include "host/DraftBody.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <string_view>

#include "host/BodyLimits.h"

namespace quillet::host {

namespace {

constexpr int kWidth = 420;         // points
constexpr int kLowest = 60;         // points
constexpr int kHighest = 400;       // points
constexpr int kPictureWidth = 390;  // points
constexpr int kPictureHeight = 300;
constexpr std::size_t kLongest = std::size_t{64} << 10U;  // bytes of HTML that are shown
// Bytes of plain text: for a long word without a break the toolkit's work is the square of them.
constexpr std::size_t kLongestPlain = std::size_t{16} << 10U;
constexpr std::size_t kMostTags = 1000;

// In place of a picture that is not shown.
QImage nothing() {
    QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QImage read(QByteArray bytes) {
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.width() <= kPictureWidth && image.height() <= kPictureHeight) {
        return image;
    }
    return image.scaled(
        kPictureWidth, kPictureHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The beginning of a body that the toolkit lays out in a moment, however deep its tags are nested.
std::string_view beginningOf(std::string_view html) {
    html = html.substr(0, kLongest);
    std::size_t end = html.find('<');
    for (std::size_t tags = 0; tags < kMostTags && end != std::string_view::npos; ++tags) {
        end = html.find('<', end + 1);
    }
    return html.substr(0, end);
}

QString textOf(std::string_view bytes) {
    return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

}  // namespace

DraftBody::DraftBody(const Draft& draft) {
    for (const DraftAttachment& attachment : draft.attachments) {
        if (!attachment.picture.empty()) {
            const std::string address = "file://" + attachment.path;
            pictures_.insert(QUrl::fromEncoded(QByteArray::fromStdString(address)),
                             QByteArray::fromStdString(attachment.picture));
        }
    }
    setOpenLinks(false);
    document()->setTextWidth(kWidth);
    showBody(draft.body);
    setMinimumHeight(kLowest);
}

void DraftBody::showBody(std::string_view body) {
    std::string_view shown = beginningOf(body);
    const QString html = textOf(shown);
    switch (formOf(body, html)) {
        case BodyForm::Html:
            setHtml(html);
            break;
        case BodyForm::HtmlWithoutTables:
            setHtml(withoutTables(html));
            break;
        case BodyForm::PlainText:
            shown = body.substr(0, kLongestPlain);
            setPlainText(textOf(shown));
            break;
    }
    isCut_ = shown.size() < body.size();
}

QSize DraftBody::sizeHint() const {
    const double height = std::ceil(document()->size().height()) + 2 * frameWidth();
    return {kWidth, static_cast<int>(std::clamp<double>(height, kLowest, kHighest))};
}

void DraftBody::showEvent(QShowEvent* event) {
    QTextBrowser::showEvent(event);
    // It scrolls to its invisible cursor, which stands below a picture in the first line.
    verticalScrollBar()->setValue(0);
}

QVariant DraftBody::loadResource(int type, const QUrl& name) {
    // What is answered with nothing at all the toolkit would look for on the disk itself.
    if (type != QTextDocument::ImageResource) {
        return QByteArray("");
    }
    const QImage picture = read(pictures_.value(name));
    return picture.isNull() ? nothing() : picture;
}

}  // namespace quillet::host
