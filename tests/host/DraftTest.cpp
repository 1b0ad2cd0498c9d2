#include <filesystem>
#include <gtest/gtest.h>
#include <string>

#include "handoff/MessageUrl.h"
#include "host/Draft.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace quillet::host {
namespace {

using State = DraftAttachment::State;

TEST(Draft, OnlyRegularFilesInsideTheDataFolderAreTaken) {
    const test::TemporaryFolder runtime;
    const test::EnvironmentVariable variable("XDG_RUNTIME_DIR", runtime.path());
    const test::TemporaryFolder folder;
    const std::string png = "\x89PNG\r\n\x1A\n…";
    const std::string secret = folder.writeFile("secret.png", png);
    const std::string picture = folder.writeFile("Data/Share/image.png", png);
    folder.writeFile("Data2/beside.png", png);
    folder.writeFile("Data/Share/text.png", "GIF? no");
    folder.writeFile("Data/Share/empty", "");
    folder.writeFile("Data/Share/folder/file", "");
    folder.writeFile("Data/Today/1.plist", "");
    std::filesystem::create_symlink(secret, folder.path("Data/Share/out.png"));
    std::filesystem::create_symlink("image.png", folder.path("Data/Share/in.png"));
    const struct {
        std::string path;
        State state;
        std::size_t size;
        std::string picture;
    } rows[] = {
        {picture, State::Taken, png.size(), png},
        {folder.path("Data/Share/in.png"), State::Taken, png.size(), png},
        {folder.path("Data/Share/text.png"), State::Taken, 7, ""},
        {folder.path("Data/Share/empty"), State::Taken, 0, ""},
        {folder.path("Data/Share/gone"), State::Missing, 0, ""},
        {folder.path("Data/Share/folder"), State::Unreadable, 0, ""},
        {folder.path("Data/New/gone"), State::Missing, 0, ""},
        {folder.path("Data/Share"), State::Foreign, 0, ""},
        {folder.path("Data/Today/1.plist"), State::Foreign, 0, ""},
        {folder.path("Data/Share/out.png"), State::Foreign, 0, ""},
        {folder.path("Data/Share/../../secret.png"), State::Foreign, 0, ""},
        {folder.path("Data2/beside.png"), State::Foreign, 0, ""},
        {folder.path("gone"), State::Foreign, 0, ""},
        {folder.path("Data"), State::Foreign, 0, ""},
        {"Data/Share/image.png", State::Foreign, 0, ""},
        {picture + std::string(1, '\0'), State::Foreign, 0, ""},
        {"", State::Foreign, 0, ""},
    };
    const auto message = ExtensionMessage::init();
    ExtensionMessage::Attachments paths;
    for (const auto& row : rows) {
        paths.emplace_back(row.path);
    }
    message->setAttachments(paths);
    const Draft draft = receiveDraft(queryUrl(*message, "compose").value(), folder.path("Data"));
    ASSERT_EQ(draft.attachments.size(), std::size(rows));
    EXPECT_EQ(draft.body,
              "<img src=\"file://" + picture + "\"/><br/><img src=\"file://" +
                  folder.path("Data/Share/in.png") + "\"/><br/>");
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        SCOPED_TRACE(rows[index].path);
        EXPECT_EQ(draft.attachments[index].state, rows[index].state);
        EXPECT_EQ(draft.attachments[index].size, rows[index].size);
        EXPECT_EQ(draft.attachments[index].picture, rows[index].picture);
    }
    std::size_t locks = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(runtime.path())) {
        locks += entry.is_regular_file() ? 1 : 0;
    }
    EXPECT_EQ(locks, 1U) << "only the folder \"Share\" has to be locked";
}

}  // namespace
}  // namespace quillet::host
