#include <filesystem>
#include <fstream>
#include <gmime/gmime.h>
#include <gmock/gmock.h>

#include "mailhost/clients/DraftFiles.h"
#include "mailhost/clients/DraftMessage.h"
#include "mailhost/maildir/Delivery.h"

#include "platform/files/FileCoordinator.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"

namespace quillet::mailhost {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using namespace std::chrono_literals;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(DraftFilesTest, OnlyRegularFilesOfStagingFoldersAreTaken) {
    const test::OwnContainer own;
    const test::TemporaryFolder& container = own.container;
    const test::LogCapture log;
    const std::string data = container.makeFolder("SharedData");
    const std::string first = container.writeFile("SharedData/Share-1/a.txt", "one");
    const std::string second = container.writeFile("SharedData/Share-2/a.txt", "two");
    const std::string secret = container.writeFile("secret", "s");
    container.writeFile("SharedData/Today/m.plist", "s");
    fs::create_symlink(secret, data + "/Share-1/link");
    fs::create_directory_symlink(container.path(), data + "/Share-1/out");
    fs::create_symlink(second, data + "/Share-1/inside");
    const std::vector<std::string> refused{secret,
                                           data + "/Share-1/link",
                                           data + "/Share-1/out/secret",
                                           data + "/Share-1/../../secret",
                                           data + "/Today/m.plist",
                                           data + "/Share-1",
                                           data + "/Share-1/gone",
                                           data + "/NoFolder/x",
                                           "Share-1/a.txt",
                                           "/dev/zero"};
    std::vector<std::string> named = refused;
    named.insert(named.end(), {first, second, data + "/Share-1/inside"});
    const auto folder = newDraftFolder(container.path("cache/drafts"));
    ASSERT_TRUE(folder);
    EXPECT_EQ(fs::status(folder.value()).permissions(), fs::perms::owner_all);
    const TakenFiles taken = takeDraftFiles(named, data, folder.value(), 0ms);
    EXPECT_EQ(taken.leftOut, refused);
    const std::string copies = folder.value() + "/";
    ASSERT_THAT(taken.files, ElementsAre(copies + "a.txt", copies + "a_1.txt", copies + "inside"));
    EXPECT_EQ(contentsOf(taken.files[0]) + contentsOf(taken.files[1]), "onetwo");
    // A sharer that never ends holds nobody up.
    platform::FileCoordinator(data).coordinateWriting(first, [&](const std::string& /*path*/) {
        EXPECT_THAT(takeDraftFiles({first}, data, folder.value(), 60ms).leftOut,
                    ElementsAre(first));
    });
    fs::last_write_time(folder.value(), fs::file_time_type::clock::now() - 24h * 8);
    const auto fresh = newDraftFolder(container.path("cache/drafts"));
    removeOldDrafts(container.path("cache/drafts"));
    EXPECT_FALSE(fs::exists(folder.value()));
    EXPECT_TRUE(fs::exists(fresh.value()));
}

TEST(DraftMessageTest, AStoredDraftReadsBackWhole) {
    const test::TemporaryFolder home;
    Draft draft;
    draft.account = "anna@example.com";
    draft.to = {"Ben <ben@example.com>", "d@x\nBcc: evil@x"};
    draft.bcc = {"carl@example.com"};
    draft.subject =
        "Gr\xC3\xBC\xC3\x9F"
        "e\nX-Evil: 1";
    draft.text = "From here\n\xE2\x82\xAC";
    draft.html = "<b>\xE2\x82\xAC</b>";
    const std::string bytes("\0\r\n\xFF", 4);
    draft.files = {home.writeFile("a \xC3\xBC.pdf", bytes)};
    const auto message = draftMessage(draft, DraftForm::Stored);
    ASSERT_TRUE(message);
    const auto stored = deliver(home.path("Drafts"), message.value(), "DS");
    EXPECT_FALSE(stored) << "no mail folder is made";
    home.makeFolder("Drafts/cur");
    const auto path = deliver(home.path("Drafts"), message.value(), "DS");
    ASSERT_TRUE(path);
    EXPECT_THAT(path.value(), ::testing::EndsWith(":2,DS"));
    EXPECT_TRUE(fs::is_empty(home.path("Drafts/tmp")));

    const std::string text = contentsOf(path.value());
    GMimeStream* const stream = g_mime_stream_mem_new_with_buffer(text.data(), text.size());
    GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
    GMimeMessage* const read = g_mime_parser_construct_message(parser, nullptr);
    ASSERT_NE(read, nullptr);
    const auto header = [read](const char* name) {
        const char* const value = g_mime_object_get_header(GMIME_OBJECT(read), name);
        return std::string(value == nullptr ? "(none)" : value);
    };
    EXPECT_THAT(g_mime_message_get_subject(read),
                HasSubstr("Gr\xC3\xBC\xC3\x9F"
                          "e"));
    EXPECT_EQ(header("From") + header("Bcc") + header("X-Evil") + header("X-Unsent"),
              "anna@example.comcarl@example.com(none)(none)");
    EXPECT_THAT(header("To"), HasSubstr("Ben <ben@example.com>"));
    EXPECT_NE(header("Date") + header("Message-Id"), "(none)(none)");
    std::string parts;
    GMimePartIter* const iterator = g_mime_part_iter_new(g_mime_message_get_mime_part(read));
    do {
        GMimeObject* const each = g_mime_part_iter_get_current(iterator);
        if (GMIME_IS_TEXT_PART(each)) {
            char* const body = g_mime_text_part_get_text(GMIME_TEXT_PART(each));
            parts += std::string(body) + "|";
            g_free(body);
        } else if (GMIME_IS_PART(each)) {
            GMimeStream* const memory = g_mime_stream_mem_new();
            g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(GMIME_PART(each)), memory);
            const GByteArray* const content =
                g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory));
            parts += std::string(g_mime_part_get_filename(GMIME_PART(each))) + "|" +
                     std::string(reinterpret_cast<const char*>(content->data), content->len);
            g_object_unref(memory);
        }
    } while (g_mime_part_iter_next(iterator) != FALSE);
    EXPECT_EQ(parts, draft.text + "|" + draft.html + "|a \xC3\xBC.pdf|" + bytes);
    g_mime_part_iter_free(iterator);
    g_object_unref(read);
    g_object_unref(parser);
    g_object_unref(stream);

    EXPECT_THAT(draftMessage(draft, DraftForm::Opened).value(), HasSubstr("X-Unsent: 1"));
    draft.files = {home.path("gone")};
    EXPECT_FALSE(draftMessage(draft, DraftForm::Stored));
}

}  // namespace
}  // namespace quillet::mailhost
