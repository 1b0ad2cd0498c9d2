#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <cerrno>
#include <cstring>

#include "share/SharedItems.h"

#include "platform/extension/ItemProvider.h"

namespace quillet {

using platform::Bitmap;
using platform::ExtensionItem;
using platform::ReadyItemProvider;
using platform::Result;

namespace {

constexpr const char* kSource = "the clipboard";

using Items = std::vector<Result<ExtensionItem>>;

// One URL a line; lines that begin with "#" are comments.
Items itemsOfList(const QByteArray& list) {
    Items items;
    for (const QByteArray& line : list.split('\n')) {
        const QByteArray word = line.trimmed();
        if (!word.isEmpty() && !word.startsWith('#')) {
            items.push_back(itemOfWord(word.toStdString()));
        }
    }
    return items;
}

ExtensionItem itemOfImage(const QImage& image) {
    const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888);
    auto bitmap = std::make_shared<Bitmap>();
    bitmap->width = static_cast<std::size_t>(pixels.width());
    bitmap->height = static_cast<std::size_t>(pixels.height());
    const std::size_t row = bitmap->width * Bitmap::kBytesPerPixel;
    bitmap->pixels.resize(row * bitmap->height);
    for (std::size_t line = 0; line < bitmap->height; ++line) {
        std::memcpy(
            bitmap->pixels.data() + line * row, pixels.constScanLine(static_cast<int>(line)), row);
    }
    return {{}, {}, {std::make_shared<ReadyItemProvider>(std::move(bitmap))}};
}

}  // namespace

Items itemsOfClipboard(TextKind kind) {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (data == nullptr) {
        return {};
    }
    if (kind == TextKind::ByContent) {
        if (Items items = itemsOfList(data->data(QStringLiteral("text/uri-list")));
            !items.empty()) {
            return items;
        }
        const auto image = qvariant_cast<QImage>(data->imageData());
        if (data->hasImage() && !image.isNull()) {
            return {itemOfImage(image)};
        }
    }
    if (kind != TextKind::Plain && data->hasHtml()) {
        return {itemOfBytes(data->html().toStdString(), TextKind::Html, kSource)};
    }
    if (data->hasText()) {
        return {itemOfBytes(
            data->text().toStdString(), kind == TextKind::Html ? kind : TextKind::Plain, kSource)};
    }
    return {};
}

}  // namespace quillet
