#include <QBuffer>
#include <QImage>
#include <algorithm>
#include <future>
#include <gmock/gmock.h>
#include <sstream>
#include <sys/stat.h>
#include <thread>
#include <tuple>
#include <unistd.h>

#include "handoff/GatherItems.h"
#include "handoff/Staging.h"
#include "tests/handoff/ContainerFixture.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using namespace std::literals;
using ExtensionUtilities::ShareDatas;
using ExtensionUtilities::ShareFiles;
using ExtensionUtilities::ShareInit;
using platform::Bitmap;
using platform::ExtensionItem;
using platform::Item;
using platform::ItemProvider;
using platform::ReadyItemProvider;
using platform::StyledText;
using platform::URL;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class StagingTest : public ContainerFixture {
protected:
    StagingTest() { ShareInit("share"); }
};

TEST_F(StagingTest, AFolderIsEmptiedAndOneThatWasNotThereIsLogged) {
    EXPECT_THAT(stagedNames(), IsEmpty());
    files.writeFile("kept", "text");
    container.writeFile("SharedData/share/old/file", "");
    ASSERT_EQ(::symlink(files.path().c_str(), staged("link").c_str()), 0);
    ShareInit("share");
    EXPECT_THAT(stagedNames(), IsEmpty());
    EXPECT_EQ(contents(files.path("kept")), "text");
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("shareInit delete ")));
}

TEST_F(StagingTest, CopiesKeepNamesAndContentsAndNoneReplacesAnother) {
    const std::pair<const char*, const char*> names[] = {{"1/report.tar.gz", "report.tar.gz"},
                                                         {"2/report.tar.gz", "report.tar_1.gz"},
                                                         {"name \xFF\n", "name \xFF\n"},
                                                         {"image.png", "image.png"},
                                                         {".hidden", ".hidden"}};
    for (const auto& [source, copy] : names) {
        const std::string path = files.writeFile(source, source);
        EXPECT_THAT(ShareFiles("share", {path}), ElementsAre(staged(copy)));
        EXPECT_EQ(contents(staged(copy)), source);
    }
    EXPECT_THAT(ShareDatas("share", {"5", "\0"sv}),
                ElementsAre(staged("image_1.png"), staged("image_2.png")));
    EXPECT_EQ(contents(staged("image_2.png")), "\0"s);
    const std::vector<std::string> many(12, files.writeFile("a.txt", "x"));
    EXPECT_EQ(ShareFiles("share", many).back(), staged("a_11.txt"));
}

TEST_F(StagingTest, WhatCannotBeStagedIsLoggedAndLeavesTheRest) {
    ASSERT_EQ(::mkfifo(files.path("fifo").c_str(), 0600), 0);
    const std::string large(5000, 'x');
    const std::string good = files.writeFile("good", "1");
    const std::string failing[] = {"",
                                   files.path(),
                                   good + "\0"s,
                                   files.path("missing"),
                                   files.path("fifo"),
                                   files.writeFile("large", large),
                                   "/sys/devices/system/cpu/online"};  // shorter than its size
    const FileSizeLimit diskFull(4096);
    for (const std::string& bad : failing) {
        const LogCapture lines;
        EXPECT_EQ(ShareFiles("share", {bad, good}).size(), 1U) << bad;
        EXPECT_THAT(lines.lines(), ElementsAre(StartsWith("Error writing file shareFiles ")))
            << bad;
    }
    ShareInit("share");
    EXPECT_THAT(ShareDatas("share", {large, "3"}), ElementsAre(staged("image.png")));
    EXPECT_THAT(log.lines().back(), StartsWith("Error writing file shareDatas "));
    EXPECT_THAT(stagedNames(), ElementsAre("image.png"));
}

TEST_F(StagingTest, WhatPermissionsForbidIsLoggedAndTheRestIsStaged) {
    const std::string good = files.writeFile("good", "1");
    const std::string secret = files.writeFile("secret", "2");
    ASSERT_EQ(::chmod(secret.c_str(), 0), 0);
    const OrdinaryPermissions asUser;
    EXPECT_THAT(ShareFiles("share", {secret, good}), ElementsAre(staged("good")));
    ASSERT_EQ(::chmod(staged("").c_str(), 0500), 0);
    EXPECT_THAT(ShareFiles("share", {good}), IsEmpty());
    EXPECT_THAT(ShareDatas("share", {"3"}), IsEmpty());
    ShareInit("share");
    EXPECT_THAT(stagedNames(), ElementsAre("good"));
    ASSERT_EQ(::chmod(container.path("SharedData").c_str(), 0500), 0);
    ShareInit("other");
    EXPECT_THAT(log.lines(),
                ElementsAre(StartsWith("shareInit delete "),
                            StartsWith("Error writing file shareFiles " + secret + ": Perm"),
                            StartsWith("Error writing file shareFiles "),
                            StartsWith("Error writing file shareDatas "),
                            StartsWith("shareInit delete "),
                            StartsWith("shareInit delete "),
                            StartsWith("shareInit create ")));
    ::chmod(container.path("SharedData").c_str(), 0700);
    ::chmod(staged("").c_str(), 0700);
}

TEST_F(StagingTest, AWordThatNamesNoStagingFolderTouchesNothing) {
    container.writeFile("SharedData/Today/INBOX.plist", "mail");
    const std::string file = files.writeFile("file", "");
    const auto expectRefusal = [&](std::string_view service) {
        SCOPED_TRACE(service);
        const LogCapture lines;
        ShareInit(service);
        EXPECT_THAT(ShareFiles(service, {file}), IsEmpty());
        EXPECT_THAT(ShareDatas(service, {"x"}), IsEmpty());
        EXPECT_THAT(lines.lines(),
                    ElementsAre(StartsWith("shareInit "),
                                StartsWith("Error shareFiles "),
                                StartsWith("Error shareDatas ")));
    };
    std::istringstream words("|.|..|/|a/b|Today|Accounts.plist|Contacts|a\0b"s);
    for (std::string service; std::getline(words, service, '|');) {
        expectRefusal(service);
    }
    {
        const EnvironmentVariable noContainer("QUILLET_CONTAINER", "");
        expectRefusal("share");
    }
    const EnvironmentVariable noSession("XDG_RUNTIME_DIR", file);
    const EnvironmentVariable noTemporary("TMPDIR", file);
    expectRefusal("share");
    EXPECT_EQ(contents(container.path("SharedData/Today/INBOX.plist")), "mail");
}

TEST_F(StagingTest, StagingWaitsForAHostThatReads) {
    const std::string file = files.writeFile("file", "text");
    const CoordinatingProcess host(container.path("SharedData"), staged("earlier"), Access::Read);
    ASSERT_TRUE(waitUntil([&] { return host.isInside(); }));
    std::thread sharing([&] { ShareFiles("share", {file}); });
    EXPECT_TRUE(waitUntil([] { return waitsForLock(::getpid()); }));
    EXPECT_THAT(stagedNames(), IsEmpty());
    host.letGo();
    sharing.join();
    EXPECT_THAT(stagedNames(), ElementsAre("file"));
}

using Answer = std::function<void(const ItemProvider::Completion&)>;
using Result = platform::Result<Item>;
using Provider = std::shared_ptr<ItemProvider>;

const Item kLink = URL::URLWithString("a:b").value();
constexpr std::string_view kAnchor = "<a href=\"a:b\">a:b</a>";

Provider ready(Item item) {
    return std::make_shared<ReadyItemProvider>(std::move(item));
}

// A provider of one type that answers as the test says.
struct Scripted final : ItemProvider {
    Scripted(std::string_view offered, Answer given) : type(offered), answer(std::move(given)) {}
    bool hasItemConformingToTypeIdentifier(std::string_view wanted) const override {
        return type == wanted;
    }
    void loadItem(std::string_view /*wanted*/, Completion done) override { answer(done); }

    std::string_view type;
    Answer answer;
};

Provider scripted(Answer answer, std::string_view type = platform::kUTTypeURL) {
    return std::make_shared<Scripted>(type, std::move(answer));
}

Provider answering(const Result& item, std::string_view type = platform::kUTTypeURL) {
    return scripted([item](const auto& done) { done(item); }, type);
}

Provider image(const Bitmap& bitmap) {
    return ready(std::make_shared<const Bitmap>(bitmap));
}

std::string pictureFile(const char* format) {
    QBuffer file;
    QImage(2, 1, QImage::Format_RGB32).save(&file, format);
    return file.data().toStdString();
}

class GatheringTest : public StagingTest {
protected:
    // The gathered draft. Afterwards `pauses` contains the seconds of each pause.
    std::shared_ptr<ExtensionMessage> gather(const std::vector<ExtensionItem>& items) {
        struct : platform::Queue {
            void async(Block block) override { block(); }
        } queue;
        std::shared_ptr<ExtensionMessage> draft;
        pauses.clear();
        gatherItems(
            {items},
            "share",
            [&](const std::shared_ptr<ExtensionMessage>& message, int) { draft = message; },
            queue,
            [this](double seconds) {
                pauses.push_back(seconds);
                if (pauses.size() == 3 && inThirdPause) {
                    inThirdPause(kLink);
                }
            });
        return draft;
    }

    std::vector<double> pauses;
    ItemProvider::Completion inThirdPause;
};

TEST_F(GatheringTest, TextsLinksFilesAndPicturesBecomeOneDraft) {
    const std::string file = files.writeFile("50% of it.txt", "text");
    const auto draft =
        gather({{StyledText{"no link", {}}, StyledText{"a\nb", {}}, {}},
                {std::nullopt, StyledText{}, {ready(URL::fileURLWithPath(file))}},
                {StyledText{"", "<b>Tit</b>le"},
                 StyledText{"", "<b>c</b>"},
                 {ready(kLink), ready(pictureFile("bmp")), image({1, 1, {1, 2, 3, 255}})}}});
    EXPECT_THAT(pauses, ElementsAre(0.10000000149011612));
    EXPECT_EQ(draft->htmlBody(), "a<br/>b<br/><b>c</b><br/>" + std::string(kAnchor));
    EXPECT_EQ(draft->subject(), "Title");
    for (std::size_t at = 0; const auto* name : {"50% of it.txt", "image.png", "image_1.png"}) {
        EXPECT_EQ(std::any_cast<std::string>(draft->attachments()->at(at++)), staged(name));
    }
    EXPECT_EQ(contents(staged("50% of it.txt")), "text");
    EXPECT_EQ(QImage(QString::fromStdString(staged("image.png"))).size(), QSize(2, 1));
    EXPECT_EQ(QImage(QString::fromStdString(staged("image_1.png"))).pixel(0, 0), qRgb(1, 2, 3));
}

TEST_F(GatheringTest, TheWaitEndsWithTheLastItemOrAtItsLimit) {
    const auto later = scripted([this](const auto& done) { inThirdPause = done; });
    ItemProvider::Completion abandoned;
    const auto never = scripted([&](const auto& done) { abandoned = done; });
    const auto twice = scripted([](const auto& done) { done(kLink), done(kLink); });
    const std::tuple<const char*, std::vector<Provider>, std::size_t, std::size_t> cases[] = {
        {"nothing", {}, 1, 0},
        {"answers in the third pause", {later}, 3, 1},
        {"never answers", {never, ready(kLink)}, 101, 1},
        {"of neither type", {answering(kLink, "public.text")}, 101, 0},
        {"no provider", {nullptr}, 101, 0},
        {"answers twice", {twice}, 1, 1},
        {"one answers twice, the other later", {twice, later}, 3, 2},
    };
    for (const auto& [name, attachments, numberOfPauses, links] : cases) {
        SCOPED_TRACE(name);
        const auto draft = gather({{std::nullopt, std::nullopt, attachments}});
        EXPECT_EQ(pauses.size(), numberOfPauses);
        EXPECT_EQ(draft->htmlBody()->size(), links * kAnchor.size());
        if (const auto done = std::exchange(abandoned, nullptr)) {
            done(kLink);  // an answer after the end still changes the draft
            EXPECT_EQ(draft->htmlBody()->size(), (links + 1) * kAnchor.size());
        }
    }
}

TEST_F(GatheringTest, WhatCannotBeLoadedIsLoggedAndLeavesTheRest) {
    const platform::Error error{"Test", 7, "no luck"};
    // Claims 60,000 by 60,000 pixels.
    const std::string huge =
        pictureFile("bmp").replace(18, 8, std::string("\x60\xEA\0\0\x60\xEA\0\0", 8));
    using platform::kUTTypeImage;
    const std::string url = "GetItemForExtension kUTTypeURL ";
    const std::string picture = "GetItemForExtension kUTTypeImage ";
    const std::pair<Provider, std::string> cases[] = {
        {answering(error), url + "no luck"},
        {answering(Item("x")), url},
        {answering(error, kUTTypeImage), picture + "no luck"},
        {answering(kLink, kUTTypeImage), picture},
        {ready(pictureFile("png").substr(0, 60)), picture},
        {ready(huge), picture},
        {image({}), picture},
        {image({4, std::size_t{1} << 63U, {0, 0, 0, 0}}), picture},
        {ready(std::shared_ptr<const Bitmap>()), picture},
        {ready(URL::fileURLWithPath("/missing")), "Error writing file shareFiles "},
    };
    for (const auto& [attachment, line] : cases) {
        SCOPED_TRACE(line);
        const auto draft = gather({{std::nullopt, std::nullopt, {attachment, ready(kLink)}}});
        EXPECT_THAT(log.lines().back(), StartsWith(line));
        EXPECT_EQ(pauses.size(), 1U);
        EXPECT_TRUE(draft->attachments()->empty());
        EXPECT_EQ(draft->htmlBody(), kAnchor);
    }
}

TEST_F(GatheringTest, NothingIsLostWhenManyThreadsAnswerAtOnce) {
    constexpr std::size_t kEach = 16;
    const Item file = URL::fileURLWithPath(files.writeFile("file", ""));
    std::vector<std::thread> threads;
    ExtensionItem item;
    for (std::size_t number = 0; number < 2 * kEach; ++number) {
        item.attachments.push_back(scripted([&, number](const auto& done) {
            threads.emplace_back([&file, number, done] { done(number % 2 == 0 ? file : kLink); });
        }));
    }
    std::promise<std::shared_ptr<ExtensionMessage>> promise;
    ExtensionUtilities::GetItemForExtension(
        {{item}}, "share", [&](const auto& message, int /*error*/) { promise.set_value(message); });
    const auto draft = promise.get_future().get();
    std::ranges::for_each(threads, &std::thread::join);
    EXPECT_EQ(draft->attachments()->size(), kEach);
    EXPECT_EQ(stagedNames().size(), kEach);
    EXPECT_EQ(draft->htmlBody()->size(), kEach * kAnchor.size());
}

}  // namespace
}  // namespace quillet::test
