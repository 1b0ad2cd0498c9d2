// The read of the message store, on real folders: what is taken, what is skipped, what is logged.

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

namespace quillet::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace fs = std::filesystem;

namespace {

MATCHER(StartsWithExpected, "") {
    return std::get<0>(arg).starts_with(std::get<1>(arg));
}

// Numbers of two bytes in a binary property list.
std::string numbers(const std::vector<std::size_t>& values) {
    std::string bytes;
    for (const std::size_t value : values) {
        bytes += bigEndian(value, 2);
    }
    return bytes;
}

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
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {"updateData error deserialize an empty file"}},
        {"x", {"updateData error deserialize "}},
        {fileXml("").substr(0, 80), {"updateData error deserialize "}},
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
        EXPECT_THAT(lines.lines(), ::testing::Pointwise(StartsWithExpected(), logged));
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
    std::vector<std::string> objects{"\xD3" + numbers({1, 2, 3, 4, 4, 5}),
                                     ascii("folder"),
                                     ascii("account"),
                                     ascii("data"),
                                     "\x09",
                                     "\xAF\x11" + numbers({kMessages}),
                                     ascii("subject"),
                                     ascii("flip"),
                                     ascii("date"),
                                     "\x5F\x11" + numbers({text.size()}) + text};
    for (std::size_t message = 0; message < kMessages; ++message) {
        objects[5] += numbers({objects.size()});
        objects.push_back("\xD3" + numbers({6, 7, 8, 9, 9, 9}));
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
    std::atomic<bool> done = false;
    std::thread host([&] {
        const std::string path = container.path("SharedData/Today/a@x/flicker.plist");
        while (!done) {
            std::ofstream(path) << fileXml(messageXml("flicker", 2));
            fs::rename(path, path + "-renamed");
            fs::remove(path + "-renamed");
        }
    });
    for (int round = 0; round < 200; ++round) {
        const auto found = read();
        EXPECT_NE(std::find(found.begin(), found.end(), "steady"), found.end());
    }
    done = true;
    host.join();
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

}  // namespace
}  // namespace quillet::test
