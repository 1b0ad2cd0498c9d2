#include "mailhost/clients/DraftMessage.h"

#include <cerrno>
#include <gio/gio.h>
#include <gmime/gmime.h>
#include <memory>

#include "mailhost/maildir/MailLibrary.h"

#include "platform/base/Utf8.h"
#include "platform/files/Path.h"
#include "platform/files/RegularFile.h"

namespace quillet::mailhost {

namespace {

struct UnrefObject {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, UnrefObject>;
using Part = Owned<GMimeObject>;

void addAddresses(GMimeMessage* message,
                  GMimeAddressType type,
                  const std::vector<std::string>& addresses) {
    InternetAddressList* const list = g_mime_message_get_addresses(message, type);
    for (const std::string& address : addresses) {
        const Owned<InternetAddressList> parsed(
            internet_address_list_parse(nullptr, address.c_str()));
        if (parsed) {
            internet_address_list_append(list, parsed.get());
        }
    }
}

Part textPart(const char* kind, const std::string& text) {
    const Owned<GMimeTextPart> part(g_mime_text_part_new_with_subtype(kind));
    g_mime_text_part_set_charset(part.get(), "utf-8");
    g_mime_text_part_set_text(part.get(), platform::validUtf8(text).c_str());
    GMimePart* const mime = GMIME_PART(part.get());
    g_mime_part_set_content_encoding(
        mime, g_mime_part_get_best_content_encoding(mime, GMIME_ENCODING_CONSTRAINT_7BIT));
    return Part(GMIME_OBJECT(g_object_ref(part.get())));
}

void add(GMimeMultipart* multipart, const Part& part) {
    g_mime_multipart_add(multipart, part.get());
}

Part bodyPart(const Draft& draft) {
    if (draft.html.empty()) {
        return textPart("plain", draft.text);
    }
    GMimeMultipart* const both = g_mime_multipart_new_with_subtype("alternative");
    add(both, textPart("plain", draft.text));
    add(both, textPart("html", draft.html));
    return Part(GMIME_OBJECT(both));
}

std::string mimeTypeOf(const std::string& name) {
    const std::unique_ptr<char, void (*)(void*)> type(
        g_content_type_guess(name.c_str(), nullptr, 0, nullptr), g_free);
    const std::unique_ptr<char, void (*)(void*)> mime(
        type ? g_content_type_get_mime_type(type.get()) : nullptr, g_free);
    // A message as a file stays one file: programs take parts of these types apart.
    const std::string text = mime ? mime.get() : "";
    const bool isPlain =
        !text.empty() && !text.starts_with("message/") && !text.starts_with("multipart/");
    return isPlain ? text : "application/octet-stream";
}

Part filePart(platform::RegularFile file, const std::string& path) {
    const std::string name = platform::validUtf8(platform::Path::lastPathComponent(path));
    const std::string type = mimeTypeOf(name);
    const std::size_t slash = type.find('/');
    const Owned<GMimePart> part(
        g_mime_part_new_with_type(type.substr(0, slash).c_str(), type.substr(slash + 1).c_str()));
    const Owned<GMimeStream> stream(g_mime_stream_fs_new(file.file.release()));
    const Owned<GMimeDataWrapper> contents(
        g_mime_data_wrapper_new_with_stream(stream.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    g_mime_part_set_content(part.get(), contents.get());
    g_mime_part_set_content_encoding(part.get(), GMIME_CONTENT_ENCODING_BASE64);
    g_mime_object_set_disposition(GMIME_OBJECT(part.get()), GMIME_DISPOSITION_ATTACHMENT);
    g_mime_part_set_filename(part.get(), name.c_str());
    return Part(GMIME_OBJECT(g_object_ref(part.get())));
}

platform::Result<Part> contentsOf(const Draft& draft) {
    Part body = bodyPart(draft);
    if (draft.files.empty()) {
        return body;
    }
    GMimeMultipart* const all = g_mime_multipart_new_with_subtype("mixed");
    Part whole(GMIME_OBJECT(all));
    add(all, body);
    std::size_t room = kMostFiles;
    for (const std::string& path : draft.files) {
        auto file = platform::openRegularFile(path);
        if (!file) {
            return file.error();
        }
        if (file.value().size > room) {
            return platform::posixError(EFBIG, path);
        }
        room -= file.value().size;
        add(all, filePart(std::move(file.value()), path));
    }
    return whole;
}

void addHeaders(GMimeMessage* message, const Draft& draft, DraftForm form) {
    const std::string& from = draft.from.empty() ? draft.account : draft.from;
    addAddresses(message, GMIME_ADDRESS_TYPE_FROM, {from});
    addAddresses(message, GMIME_ADDRESS_TYPE_TO, draft.to);
    addAddresses(message, GMIME_ADDRESS_TYPE_CC, draft.cc);
    addAddresses(message, GMIME_ADDRESS_TYPE_BCC, draft.bcc);
    g_mime_message_set_subject(message, draft.subject.c_str(), "utf-8");
    const std::unique_ptr<GDateTime, void (*)(GDateTime*)> now(g_date_time_new_now_local(),
                                                               g_date_time_unref);
    g_mime_message_set_date(message, now.get());
    const std::unique_ptr<char, void (*)(void*)> identifier(
        g_mime_utils_generate_message_id("quillet.invalid"), g_free);
    g_mime_message_set_message_id(message, identifier.get());
    if (form == DraftForm::Opened) {
        g_mime_object_set_header(GMIME_OBJECT(message), "X-Unsent", "1", "utf-8");
    }
}

}  // namespace

platform::Result<std::string> draftMessage(const Draft& draft, DraftForm form) {
    startMailLibrary();
    const auto contents = contentsOf(draft);
    if (!contents) {
        return contents.error();
    }
    const Owned<GMimeMessage> message(g_mime_message_new(TRUE));
    addHeaders(message.get(), draft, form);
    g_mime_message_set_mime_part(message.get(), contents.value().get());
    const Owned<GMimeStream> stream(g_mime_stream_mem_new());
    if (g_mime_object_write_to_stream(GMIME_OBJECT(message.get()), nullptr, stream.get()) < 0) {
        return platform::posixError(EIO, "the message of a draft");
    }
    const GByteArray* const bytes =
        g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
}

}  // namespace quillet::mailhost
