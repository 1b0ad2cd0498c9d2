// The read of the message store, on real folders: what is taken, what is skipped, what is logged.
// And the choice of the messages that are shown.

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <thread>

#include "model/ContainerPaths.h"
#include "model/RecordFields.h"
#include "platform/files/FileCoordinator.h"
#include "tests/platform/plist/PropertyListTestSupport.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/PropertyLists.h"
#include "tests/support/WaitFor.h"
#include "tests/widget/StoreFixture.h"
#include "widget/MessageList.h"

namespace quillet::test {
namespace {

using MessageList::Messages;
using platform::Number;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace fs = std::filesystem;
using namespace std::string_literals;

class StoreTest : public StoreFixture {};

TEST_F(StoreTest, MessagesOfEnabledAccountsComeNewestFirst) {
    writeFile("a@x", "1.plist", fileXml(messageXml("ten", 36000) + messageXml("nine", 32400)));
    writeFile("b@x", "1.plist", fileXml(messageXml("half past nine", 34200)));
    writeFile("off@x", "1.plist", fileXml(messageXml("disabled", 40000)));
    writeFile("stranger@x", "1.plist", fileXml(messageXml("no account", 40000)));
    EXPECT_THAT(read(), ElementsAre("ten", "half past nine", "nine"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StoreTest, WhatCannotBeReadIsSkippedAndTheRestIsKept) {
    const std::string data = "<key>data</key><array>" + messageXml("lost", 1) + "</array>";
    std::string tooMany;
    for (std::size_t record = 0; record <= kMaximumRecords; ++record) {
        tooMany += "<true/>";
    }
    const std::pair<std::string, std::vector<::testing::Matcher<std::string>>> cases[] = {
        {"", {StartsWith("updateData error deserialize an empty file")}},
        {"x", {StartsWith("updateData error deserialize ")}},
        {fileXml("").substr(0, 80), {StartsWith("updateData error deserialize ")}},
        {fileXml(tooMany), {"updateData error deserialize more messages than the limit"}},
        {xmlPropertyList("<array/>"), {"updateData error deserialize no dictionary in return"}},
        {xmlPropertyList("<dict><key>account</key><true/>" + data + "</dict>"), {}},
        {xmlPropertyList("<dict><key>folder</key><true/>" + data + "</dict>"), {}},
        {xmlPropertyList("<dict><key>folder</key><true/></dict>"), {}},
    };
    writeFile("a@x", "good.plist", fileXml(messageXml("kept", 1)));
    for (const auto& [bytes, logged] : cases) {
        SCOPED_TRACE(bytes.substr(0, 200));
        writeFile("a@x", "bad.plist", bytes);
        const LogCapture lines;
        EXPECT_THAT(read(), ElementsAre("kept"));
        EXPECT_THAT(lines.lines(), ::testing::ElementsAreArray(logged));
    }
}

TEST_F(StoreTest, FilesAreReadInListingOrderUntilAValueRaises) {
    constexpr std::size_t kFiles = 50;
    for (std::size_t file = 0; file < kFiles; ++file) {
        const std::string name = std::to_string(file);
        writeFile("a@x", name, fileXml(messageXml(name, 1) + messageXml(name, 1)));
    }
    const auto files =
        *ExtensionUtilities::directoryContent(container.path("SharedData/Today/a@x"));
    std::vector<std::string> expected;
    for (const fs::path file : files) {
        expected.insert(expected.end(), 2, file.filename());
    }
    EXPECT_EQ(read(), expected);
    for (const std::size_t broken : {kFiles - 1, kFiles / 2, std::size_t{0}}) {
        const LogCapture lines;
        std::ofstream(files[broken]) << xmlPropertyList(
            "<dict><key>folder</key><true/><key>account</key><true/>"
            "<key>data</key><integer>1</integer></dict>");
        if (broken + 1 < kFiles) {
            std::ofstream(files[broken + 1]) << "neither read nor complained about";
        }
        expected.resize(2 * broken);
        EXPECT_EQ(read(), expected) << broken;
        EXPECT_THAT(lines.lines(), ElementsAre(StartsWith("updateData exception "))) << broken;
    }
}

TEST_F(StoreTest, OnlyRegularFilesAreOpenedWhateverTheirName) {
    writeFile("a@x", "\xFF\xFE.plist", fileXml(messageXml("kept", 2)));
    const std::string folder = container.path("SharedData/Today/a@x");
    fs::create_symlink("\xFF\xFE.plist", folder + "/link");
    writeFile("a@x", ".hidden.plist", "not opened, so not complained about");
    writeFile(".cache", "1.plist", "x");
    writeFile("a@x", "folder/inside.plist", fileXml(messageXml("too deep", 1)));
    ASSERT_EQ(mkfifo((folder + "/fifo").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", folder + "/device");
    fs::create_symlink("loop", folder + "/loop");
    fs::create_symlink("nowhere", folder + "/dangling");
    container.writeFile("SharedData/elsewhere/1.plist", fileXml(messageXml("linked", 1)));
    fs::create_directory_symlink("../elsewhere", container.path("SharedData/Today/b@x"));
    EXPECT_THAT(read(), ElementsAre("kept", "kept", "linked"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StoreTest, AStoreThatIsAFileOrALinkToItselfIsSilentlyEmpty) {
    const std::string today = container.path("SharedData/Today");
    fs::create_symlink("Today", today);
    EXPECT_THAT(read(), IsEmpty());
    fs::remove(today);
    container.writeFile("SharedData/Today", "a file");
    EXPECT_THAT(read(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StoreTest, HugeTextsAndCrowdedFoldersAreRead) {
    const std::string subject(1024 * 1024, 's');
    writeFile("a@x",
              "big.plist",
              fileXml("<dict><key>subject</key><string>" + subject + "</string></dict>"));
    for (int index = 0; index < 2000; ++index) {
        writeFile("b@x", std::to_string(index), "<dict/>");
    }
    writeFile("b@x", "last", fileXml(messageXml("among many", 200)));
    const auto messages = TodayViewController::updateData();
    EXPECT_THAT(identifiersOf(messages), ElementsAre("among many", ""));
    EXPECT_EQ(messages->back()->subject(), subject);
}

TEST_F(StoreTest, MessagesOfABinaryFileMayShareALongText) {
    constexpr std::size_t kMessages = 5000;
    const std::string text = "12 " + std::string(3000, 's');
    // Objects 0 to 9 are the file, its keys and values, the keys of a message and the long text.
    std::vector<std::string> objects{"\xD3\0\1\0\2\0\3\0\4\0\4\0\5"s,
                                     ascii("folder"),
                                     ascii("account"),
                                     ascii("data"),
                                     "\x09",
                                     "\xAF\x11" + bigEndian(kMessages, 2),
                                     ascii("subject"),
                                     ascii("flip"),
                                     ascii("date"),
                                     "\x5F\x11" + bigEndian(text.size(), 2) + text};
    for (std::size_t message = 0; message < kMessages; ++message) {
        objects[5] += bigEndian(objects.size(), 2);
        objects.push_back("\xD3\0\6\0\7\0\10\0\11\0\11\0\11"s);
    }
    writeFile("a@x", "1.plist", binaryFile(objects, 2, 4));
    const auto messages = TodayViewController::updateData();
    EXPECT_THAT(log.lines(), IsEmpty());
    ASSERT_THAT(*messages, SizeIs(kMessages));
    EXPECT_EQ(messages->back()->subject(), text);
    EXPECT_EQ(messages->back()->flip(), 12U);
    EXPECT_EQ(messages->back()->date(), 12.0);
}

TEST_F(StoreTest, FilesThatComeAndGoDuringTheReadDoNoHarm) {
    writeFile("a@x", "steady.plist", fileXml(messageXml("steady", 1)));
    std::jthread host([&](const std::stop_token& done) {
        const std::string path = container.path("SharedData/Today/a@x/flicker.plist");
        while (!done.stop_requested()) {
            std::ofstream(path) << fileXml(messageXml("flicker", 2));
            fs::rename(path, path + "-renamed");
            fs::remove(path + "-renamed");
        }
    });
    for (int round = 0; round < 200; ++round) {
        EXPECT_THAT(read(), ::testing::Contains("steady"));
    }
}

TEST_F(StoreTest, FailedCoordinationIsLoggedAndReadsNothing) {
    writeFile("a@x", "1.plist", fileXml(messageXml("m", 1)));
    const std::string file = container.writeFile("no-folder", "");
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    EXPECT_THAT(read(), IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("NSFileCoordinator Accounts "),
                            StartsWith("updateData coordinator ")));
}

TEST_F(StoreTest, ReadWaitsForTheHostThatWritesInTheStore) {
    const std::string path = writeFile("a@x", "1.plist", "half written");
    std::thread reader;
    std::vector<std::string> found;
    const platform::FileCoordinator host(container.path("SharedData"));
    const auto error = host.coordinateWriting(path, [&](const std::string& file) {
        reader = std::thread([&] { found = read(); });
        EXPECT_TRUE(waitFor([&] { return somebodyWaitsForToday(runtime.path()); }));
        std::ofstream(file) << fileXml(messageXml("whole", 1));
    });
    EXPECT_FALSE(error);
    reader.join();
    EXPECT_THAT(found, ElementsAre("whole"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

std::shared_ptr<ExtensionMessage> message(const std::string& messageId,
                                          std::optional<Number> folder = Number(std::int64_t{1})) {
    auto made = ExtensionMessage::init();
    made->setMessageId(messageId);
    made->setAccount("a@x");
    made->setFolderStandardId(folder);
    return made;
}

std::string identifiers(const Messages& messages) {
    std::string text;
    for (const auto& one : messages) {
        text += one->messageId().value_or("-");
    }
    return text;
}

ExtensionMessageList listOf(Messages messages) {
    return std::make_shared<const Messages>(std::move(messages));
}

TEST(MessageList, SortIsDescendingStableAndPutsUndatedLast) {
    const auto block = RecordBlock::make();
    EXPECT_TRUE(MessageList::sortedNewestFirst(block).empty());
    std::string name = "a";
    for (const std::optional<double> date : std::initializer_list<std::optional<double>>{
             1, std::nullopt, 2, 1, -5, std::nullopt, 1e300, 1.0000000000000002}) {
        block->reserve(1);
        ExtensionMessage& record = block->append();
        record.setMessageId(name);
        record.setDate(date);
        ++name.front();
    }
    EXPECT_EQ(identifiers(MessageList::sortedNewestFirst(block)), "gchadebf");
}

TEST(MessageList, StoredSegmentChoosesTheFolder) {
    const auto all = listOf({message("i"),
                             message("t", Number(11.0)),
                             message("b", Number(true)),
                             message("m", Number(std::uint64_t{12})),
                             message("o", Number(std::int64_t{13})),
                             message("n", std::nullopt),
                             message("z", Number(std::int64_t{0}))});
    const auto before = listOf({message("x"), message("x"), message("y")});
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "itbmonz"},
        {1, "ib"},
        {2, "t"},
        {3, "m"},
        {4, "o"},
        {5, "xy"},
        {INT64_MIN, "xy"},
    };
    for (const auto& [segmented, shown] : cases) {
        EXPECT_EQ(identifiers(*MessageList::toShow(all, before, segmented)), shown) << segmented;
    }
    EXPECT_TRUE(MessageList::toShow(all, nullptr, 7)->empty());
}

TEST(MessageList, TheNewestTenOfTheSegmentAreShownAndOfThemNoDuplicates) {
    Messages all;
    for (const char identifier : std::string("tuv1234267890ab")) {
        const std::int64_t folder = identifier >= 't' ? 11 : 1;
        all.push_back(message({identifier}, Number(folder)));
    }
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 1)), "123467890");
    EXPECT_EQ(identifiers(*MessageList::toShow(listOf(all), nullptr, 0)), "tuv123467");
}

}  // namespace
}  // namespace quillet::test
