#include "message/MessageFile.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "message/AttachmentName.h"
#include "message/BodyText.h"
#include "message/GMimeObjects.h"
#include "message/MessageHeader.h"

#include "platform/base/Ascii.h"
#include "platform/extension/StyledText.h"

namespace quillet::message {

namespace {

using platform::equalsIgnoringAsciiCase;

constexpr int kMostParts = 1000;
constexpr int kMostLevels = 32;
constexpr std::size_t kLongestBody = std::size_t{4} << 20U;  // bytes of all texts together
constexpr std::size_t kLongestSource = std::size_t{16} << 10U;

// One text in one form or two.
struct Body {
    std::string plain;
    std::string html;

    bool isEmpty() const { return plain.empty() && html.empty(); }
};

std::string htmlOf(const Body& body) {
    return body.html.empty() ? platform::StyledText{body.plain, {}}.htmlRepresentation()
                             : body.html;
}

std::string plainOf(const Body& body) {
    return body.plain.empty() ? plainTextOfHtml(body.html) : body.plain;
}

void append(Body& body, Body next) {
    if (next.isEmpty()) {
        return;
    }
    if (body.isEmpty()) {
        body = std::move(next);
        return;
    }
    // In place: there may be a thousand texts.
    if (body.html.empty() && !next.html.empty()) {
        body.html = htmlOf(body);
    }
    if (body.plain.empty()) {
        body.plain = plainOf(body);
    }
    if (!body.html.empty()) {
        body.html += "<hr>" + htmlOf(next);
    }
    body.plain += "\n" + plainOf(next);
}

// The last form is the best one.
void addForm(Body& body, Body next) {
    if (!next.html.empty()) {
        body.html = std::move(next.html);
    }
    if (body.plain.empty()) {
        body.plain = std::move(next.plain);
    }
}

bool isA(GMimeObject* part, GType type) {
    return g_type_check_instance_is_a(reinterpret_cast<GTypeInstance*>(part), type) != FALSE;
}

std::string typeOf(GMimeObject* part) {
    GMimeContentType* const type = g_mime_object_get_content_type(part);
    const GMimeText text(type != nullptr ? g_mime_content_type_get_mime_type(type) : nullptr);
    return oneLine(text.get());
}

// The bytes of what writes itself into a stream.
template <typename Write>
std::string written(Write write) {
    const auto stream = owned(g_mime_stream_mem_new());
    write(stream.get());
    const GByteArray* const bytes =
        g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return bytes->len == 0 ? std::string()
                           : std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
}

std::string allOf(GMimeStream* stream, std::size_t expected) {
    constexpr std::size_t kStep = std::size_t{64} << 10U;  // bytes
    std::string bytes;
    bytes.reserve(expected + kStep);
    for (;;) {
        const std::size_t used = bytes.size();
        bytes.resize(used + kStep);
        const ssize_t count = g_mime_stream_read(stream, bytes.data() + used, kStep);
        bytes.resize(used + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count <= 0) {
            return bytes;
        }
    }
}

std::string decoded(GMimePart* part) {
    GMimeDataWrapper* const content = g_mime_part_get_content(part);
    GMimeStream* const encoded =
        content == nullptr ? nullptr : g_mime_data_wrapper_get_stream(content);
    if (encoded == nullptr) {
        return {};
    }
    const auto stream = owned(g_mime_stream_filter_new(encoded));
    const GMimeContentEncoding encoding = g_mime_data_wrapper_get_encoding(content);
    const auto filter = owned(g_mime_filter_basic_new(encoding, FALSE));
    g_mime_stream_filter_add(GMIME_STREAM_FILTER(stream.get()), filter.get());
    g_mime_stream_reset(stream.get());
    const gint64 length = g_mime_stream_length(encoded);
    const auto size = static_cast<std::size_t>(std::max<gint64>(length, 0));
    return allOf(stream.get(), encoding == GMIME_CONTENT_ENCODING_BASE64 ? size / 4 * 3 : size);
}

class PartReader {
public:
    explicit PartReader(ParsedMessage& message) : message_(message) {}

    Body read(GMimeObject* part, int level) {
        if (part == nullptr || parts_ == kMostParts || level > kMostLevels) {
            message_.isCut = message_.isCut || part != nullptr;
            return {};
        }
        ++parts_;
        if (isA(part, GMIME_TYPE_MULTIPART)) {
            return readMultipart(GMIME_MULTIPART(part), level);
        }
        if (isA(part, GMIME_TYPE_MESSAGE_PART)) {
            addMessage(GMIME_MESSAGE_PART(part));
            return {};
        }
        if (!isA(part, GMIME_TYPE_PART)) {
            return {};
        }
        return isText(part) ? readText(part) : addPart(part);
    }

private:
    Body readMultipart(GMimeMultipart* parts, int level) {
        const bool isAlternative =
            equalsIgnoringAsciiCase(typeOf(GMIME_OBJECT(parts)), "multipart/alternative");
        Body body;
        const int count = g_mime_multipart_get_count(parts);
        for (int place = 0; place < count && parts_ < kMostParts; ++place) {
            Body next = read(g_mime_multipart_get_part(parts, place), level + 1);
            isAlternative ? addForm(body, std::move(next)) : append(body, std::move(next));
        }
        message_.isCut = message_.isCut || parts_ == kMostParts;
        return body;
    }

    // Whether a part is read as text, and not kept as a file. Some programs give a file name to the
    // text of their messages.
    bool isText(GMimeObject* part) const {
        const std::string type = typeOf(part);
        const char* const disposition = g_mime_object_get_disposition(part);
        return (equalsIgnoringAsciiCase(type, "text/plain") ||
                equalsIgnoringAsciiCase(type, "text/html")) &&
               (disposition == nullptr || !equalsIgnoringAsciiCase(disposition, "attachment")) &&
               (!hasText_ || g_mime_part_get_filename(GMIME_PART(part)) == nullptr);
    }

    Body readText(GMimeObject* part) {
        hasText_ = true;
        std::string bytes = decoded(GMIME_PART(part));
        if (bytes.size() > room_) {
            bytes.resize(room_);
            message_.isCut = true;
        }
        room_ -= bytes.size();
        const char* const charset = g_mime_object_get_content_type_parameter(part, "charset");
        std::string text = utf8Of(bytes, charset == nullptr ? "" : charset);
        return equalsIgnoringAsciiCase(typeOf(part), "text/html") ? Body{{}, std::move(text)}
                                                                  : Body{std::move(text), {}};
    }

    Body addPart(GMimeObject* part) {
        const char* const name = g_mime_part_get_filename(GMIME_PART(part));
        const char* const identifier = g_mime_object_get_content_id(part);
        std::string type = typeOf(part);
        if (identifier != nullptr && type.starts_with("image/")) {
            message_.pictures.emplace(identifier, message_.attachments.size());
        }
        message_.attachments.push_back(
            {attachmentName(name == nullptr ? "" : name, type), type, decoded(GMIME_PART(part))});
        return {};
    }

    void addMessage(GMimeMessagePart* part) {
        GMimeMessage* const inner = g_mime_message_part_get_message(part);
        if (inner == nullptr) {
            return;
        }
        const char* const subject = g_mime_message_get_subject(inner);
        const std::string name = subject == nullptr ? "" : subject;
        message_.attachments.push_back(
            {attachmentName(name.empty() ? name : name + ".eml", "message/rfc822"),
             "message/rfc822",
             written([inner](GMimeStream* stream) {
                 g_mime_object_write_to_stream(GMIME_OBJECT(inner), nullptr, stream);
             })});
    }

    ParsedMessage& message_;
    int parts_ = 0;
    bool hasText_ = false;
    std::size_t room_ = kLongestBody;
};

// Leaves the bytes to whom they belong. They are only read.
struct ReturnBytes {
    void operator()(GByteArray* array) const noexcept { g_byte_array_free(array, FALSE); }
};
using BorrowedBytes = std::unique_ptr<GByteArray, ReturnBytes>;

// Mail that came out of an mbox file may still have the line that began it there.
std::string_view withoutMboxLine(std::string_view bytes) {
    if (bytes.starts_with("From ") || bytes.starts_with(">From ")) {
        bytes.remove_prefix(std::min(bytes.find('\n'), bytes.size() - 1) + 1);
    }
    return bytes;
}

}  // namespace

ParsedMessage parseMessage(std::string_view bytes) {
    startGMime();
    bytes = withoutMboxLine(bytes);
    const std::unique_ptr<GMimeParserOptions, void (*)(GMimeParserOptions*)> options(
        g_mime_parser_options_new(), g_mime_parser_options_free);
    // Text of no charset.
    std::array<const char*, 3> charsets{"utf-8", "windows-1252", nullptr};
    g_mime_parser_options_set_fallback_charsets(options.get(), charsets.data());
    const BorrowedBytes array(g_byte_array_new_take(
        reinterpret_cast<guint8*>(const_cast<char*>(bytes.data())), bytes.size()));
    const auto stream = owned(g_mime_stream_mem_new());
    g_mime_stream_mem_set_byte_array(GMIME_STREAM_MEM(stream.get()), array.get());
    const auto parser = owned(g_mime_parser_new_with_stream(stream.get()));
    const auto read = owned(g_mime_parser_construct_message(parser.get(), options.get()));
    if (!read) {
        return sourceOf(bytes);
    }
    ParsedMessage message;
    readHeader(read.get(), message);
    Body body = PartReader(message).read(g_mime_message_get_mime_part(read.get()), 0);
    message.plain = std::move(body.plain);
    message.html = std::move(body.html);
    return message;
}

ParsedMessage sourceOf(std::string_view bytes) {
    ParsedMessage message;
    message.plain = utf8Of(bytes.substr(0, kLongestSource), "");
    message.isCut = bytes.size() > kLongestSource;
    return message;
}

}  // namespace quillet::message
