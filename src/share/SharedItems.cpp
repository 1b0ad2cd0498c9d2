#include "share/SharedItems.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QImageReader>
#include <QMimeData>
#include <QStringDecoder>
#include <QTextDocument>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/base/Utf8.h"
#include "platform/extension/ItemProvider.h"
#include "platform/files/FileManager.h"
#include "platform/files/Path.h"
#include "platform/url/LinkDetector.h"

namespace quillet {

namespace FileManager = platform::FileManager;
using platform::Bitmap;
using platform::Error;
using platform::ExtensionItem;
using platform::Item;
using platform::ReadyItemProvider;
using platform::Result;
using platform::StyledText;
using platform::URL;

namespace {

Error unusable(int code, std::string text) {
    return {"POSIX", code, std::move(text)};
}

ExtensionItem attachment(Item item) {
    return {{}, {}, {std::make_shared<ReadyItemProvider>(std::move(item))}};
}

Result<ExtensionItem> itemOfFile(const std::string& path) {
    if (FileManager::folderExists(path)) {
        return unusable(EISDIR, path + " is a folder; only files can be shared");
    }
    if (!FileManager::fileExists(path)) {
        return unusable(ENOENT, "there is no file " + path);
    }
    // The draft's URL can only hold text, and the copy keeps the file's name.
    if (platform::firstInvalidUtf8(platform::Path::lastPathComponent(path))) {
        return unusable(EILSEQ, "the name of " + path + " is not UTF-8; rename the file");
    }
    return attachment(URL::fileURLWithPath(path));
}

// The link that a word spells, with or without its scheme; none for other words.
std::optional<URL> linkOf(const std::string& word) {
    constexpr std::array<std::string_view, 4> kSchemes = {"http", "https", "ftp", "mailto"};
    auto url = URL::URLWithString(word);
    if (url && std::ranges::find(kSchemes, url->scheme()) != kSchemes.end()) {
        return url;
    }
    const auto links = platform::LinkDetector::linksIn(word);
    if (links.size() != 1 || links.front().length != word.size()) {
        return std::nullopt;
    }
    return URL::URLWithString(links.front().absoluteString);
}

bool isPicture(const std::string& bytes) {
    QByteArray data = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
    QBuffer buffer(&data);
    return QImageReader(&buffer).canRead();
}

std::string decoded(const std::string& bytes) {
    const auto encoding = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(encoding.value_or(QStringConverter::Latin1));
    const QString text = decoder(QByteArrayView(bytes));
    return text.toStdString();
}

bool isText(const std::string& text) {
    return text.find('\0') == std::string::npos && !platform::firstInvalidUtf8(text);
}

// A plain text may mention tags, so only one at the beginning counts.
bool beginsWithTag(std::string_view text) {
    return platform::trimmingWhitespaceAndNewlines(text).starts_with('<') &&
           Qt::mightBeRichText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

StyledText styledText(std::string text, TextKind kind) {
    if (kind == TextKind::Plain) {
        return {std::move(text), {}};
    }
    return kind == TextKind::Html || beginsWithTag(text) ? StyledText{{}, std::move(text)}
                                                         : StyledText::withLinks(std::move(text));
}

}  // namespace

Result<ExtensionItem> itemOfWord(const std::string& word) {
    if (FileManager::fileExists(word)) {
        return itemOfFile(word);
    }
    if (const auto url = URL::URLWithString(word); url && url->isFileURL()) {
        return itemOfFile(url->path());
    }
    if (auto link = linkOf(word)) {
        return attachment(*std::move(link));
    }
    return unusable(ENOENT, "\"" + word + "\" is neither a file nor a web link");
}

Result<ExtensionItem> itemOfBytes(const std::string& bytes,
                                  TextKind kind,
                                  const std::string& source) {
    const bool isPlain = isText(bytes);
    if (!isPlain && kind == TextKind::ByContent && isPicture(bytes)) {
        return attachment(bytes);
    }
    constexpr std::string_view kMark = "\uFEFF";
    std::string text = isPlain ? bytes : decoded(bytes);
    if (text.starts_with(kMark)) {
        text.erase(0, kMark.size());
    }
    if (!isText(text)) {
        return unusable(EINVAL, source + " is neither a text nor a picture");
    }
    if (platform::trimmingWhitespaceAndNewlines(text).empty()) {
        return unusable(ENODATA, source + " is empty");
    }
    // The line break that ends the last line does not begin another line.
    if (text.ends_with('\n')) {
        text.pop_back();
    }
    return ExtensionItem{{}, styledText(std::move(text), kind), {}};
}

namespace {

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
    return attachment(std::move(bitmap));
}

}  // namespace

Items itemsOfClipboard(TextKind kind) {
    const std::string source = "the clipboard";
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
        return {itemOfBytes(data->html().toStdString(), TextKind::Html, source)};
    }
    if (data->hasText()) {
        return {itemOfBytes(
            data->text().toStdString(), kind == TextKind::Html ? kind : TextKind::Plain, source)};
    }
    return {};
}

}  // namespace quillet
