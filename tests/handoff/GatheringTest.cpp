#include <QBuffer>
#include <QImage>
#include <gmock/gmock.h>
#include <map>
#include <thread>

#include "handoff/Gathering.h"
#include "tests/handoff/ContainerFixture.h"
#include "tests/support/WaitUntil.h"

namespace quillet::test {
namespace {

using platform::Bitmap;
using platform::ExtensionContext;
using platform::ExtensionItem;
using platform::Item;
using platform::ItemProvider;
using platform::ReadyItemProvider;
using platform::StyledText;
using platform::URL;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

std::shared_ptr<ItemProvider> ready(Item item) {
    return std::make_shared<ReadyItemProvider>(std::move(item));
}

Item web(std::string_view url = "a:b") {
    return URL::URLWithString(url).value();
}

// A provider that answers as the test says.
class ScriptedProvider final : public ItemProvider {
public:
    using Answer = std::function<void(const Completion&)>;

    ScriptedProvider(std::string_view type, Answer answer)
        : type_(type), answer_(std::move(answer)) {}

    bool hasItemConformingToTypeIdentifier(std::string_view type) const override {
        return type == type_;
    }
    void loadItem(std::string_view /*type*/, Completion completion) override {
        answer_(completion);
    }

private:
    std::string type_;
    Answer answer_;
};

std::shared_ptr<ItemProvider> scripted(std::string_view type, ScriptedProvider::Answer answer) {
    return std::make_shared<ScriptedProvider>(type, std::move(answer));
}

// Keeps the block until the test runs it.
class HeldQueue final : public platform::Queue {
public:
    void async(Block block) override { block_ = std::move(block); }
    void run() {
        block_();
        block_ = nullptr;
    }

private:
    Block block_;
};

std::string png() {
    QImage image(2, 1, QImage::Format_RGB32);
    image.fill(Qt::red);
    QBuffer buffer;
    image.save(&buffer, "png");
    return buffer.data().toStdString();
}

class GatheringTest : public ContainerFixture {
protected:
    GatheringTest() { ExtensionUtilities::ShareInit("share"); }

    // The gathered draft. `pauses` holds the seconds of each pause; `during` runs in the n-th.
    std::shared_ptr<ExtensionMessage> gather(std::vector<ExtensionItem> items) {
        std::shared_ptr<ExtensionMessage> result;
        HeldQueue queue;
        gatherItems({std::move(items)},
                    "share",
                    [&](const std::shared_ptr<ExtensionMessage>& message, int error) {
                        EXPECT_EQ(error, 0);
                        result = message;
                    },
                    {queue, [this](double seconds) {
                         pauses.push_back(seconds);
                         if (const auto& block = during[pauses.size()]) {
                             block();
                         }
                     }});
        EXPECT_EQ(result, nullptr);
        pauses.clear();
        queue.run();
        return result;
    }

    static std::vector<std::string> attachmentsOf(const ExtensionMessage& message) {
        std::vector<std::string> paths;
        const auto attachments = message.attachments();
        for (const std::any& path : *attachments) {
            paths.push_back(std::any_cast<std::string>(path));
        }
        return paths;
    }

    std::vector<double> pauses;
    std::map<std::size_t, std::function<void()>> during;
};

TEST_F(GatheringTest, TextsLinksFilesAndPicturesBecomeOneDraft) {
    const std::string file = files.writeFile("50% of it.txt", "text");
    const auto bitmap = std::make_shared<const Bitmap>(Bitmap{1, 1, {1, 2, 3, 255}});
    const auto message =
        gather({{StyledText{"no link", {}}, StyledText{"a\nb", {}}, {}},
                {std::nullopt, StyledText{}, {ready(URL::fileURLWithPath(file))}},
                {StyledText{"Title", {}},
                 StyledText{"", "<b>c</b>"},
                 {ready(web("https://x.example/?a=1&b=2")), ready(png()), ready(bitmap)}}});
    EXPECT_THAT(pauses, ElementsAre(0.10000000149011612));
    EXPECT_EQ(message->htmlBody(),
              "a<br/>b<br/><b>c</b><br/><a href=\"https://x.example/?a=1&b=2\">"
              "https://x.example/?a=1&b=2</a>");
    EXPECT_EQ(message->subject(), "Title");
    EXPECT_THAT(attachmentsOf(*message),
                ElementsAre(staged("50% of it.txt"), staged("image.png"), staged("image_1.png")));
    EXPECT_EQ(contents(staged("50% of it.txt")), "text");
    const QImage picture(QString::fromStdString(staged("image_1.png")));
    EXPECT_EQ(picture.pixel(0, 0), qRgb(1, 2, 3));
    EXPECT_EQ(log.lines().size(), 1U);  // of ShareInit
}

TEST_F(GatheringTest, TheWaitEndsWithTheLastItemOrAtItsLimit) {
    std::vector<ItemProvider::Completion> waiting;
    const auto keep = [&](const ItemProvider::Completion& completion) {
        waiting.push_back(completion);
    };
    const auto none = [](const ItemProvider::Completion&) {};
    const auto twice = [](const ItemProvider::Completion& completion) {
        completion(web());
        completion(web());
    };
    during[3] = [&] {
        for (const auto& completion : waiting) {
            completion(web());
        }
    };
    constexpr std::string_view kLink = "<a href=\"a:b\">a:b</a>";
    constexpr std::size_t kLimit = 101;
    const struct {
        const char* name;
        std::vector<std::shared_ptr<ItemProvider>> attachments;
        std::size_t pauses;
        std::size_t links;
    } cases[] = {
        {"nothing", {}, 1, 0},
        {"answers in the third pause", {scripted(platform::kUTTypeURL, keep)}, 3, 1},
        {"never answers", {scripted(platform::kUTTypeURL, none), ready(web())}, kLimit, 1},
        {"of neither type", {scripted("public.text", none)}, kLimit, 0},
        {"not there", {nullptr}, kLimit, 0},
        {"answers twice", {scripted(platform::kUTTypeURL, twice)}, 1, 1},
        {"one answers twice, the other later",
         {scripted(platform::kUTTypeURL, twice), scripted(platform::kUTTypeURL, keep)},
         3,
         2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        waiting.clear();
        const auto message = gather({{std::nullopt, std::nullopt, row.attachments}});
        EXPECT_EQ(pauses.size(), row.pauses);
        EXPECT_EQ(message->htmlBody()->size(), row.links * kLink.size());
        EXPECT_EQ(message->subject(), std::nullopt);
    }
}

TEST_F(GatheringTest, AnAnswerAfterTheEndStillChangesTheDraft) {
    ItemProvider::Completion late;
    const auto message = gather(
        {{StyledText{"T", {}},
          std::nullopt,
          {scripted(platform::kUTTypeURL, [&](const auto& completion) { late = completion; })}}});
    EXPECT_EQ(message->htmlBody(), "");
    late(Item(URL::fileURLWithPath(files.writeFile("file", ""))));
    EXPECT_THAT(attachmentsOf(*message), ElementsAre(staged("file")));
}

TEST_F(GatheringTest, WhatCannotBeLoadedIsLoggedAndLeavesTheRest) {
    const auto fails = [](const ItemProvider::Completion& completion) {
        completion(platform::Error{"Test", 7, "no luck"});
    };
    const auto gives = [](Item item) {
        return [item](const ItemProvider::Completion& completion) { completion(item); };
    };
    const struct {
        std::shared_ptr<ItemProvider> attachment;
        const char* line;
    } cases[] = {
        {scripted(platform::kUTTypeURL, fails), "GetItemForExtension kUTTypeURL no luck (Test 7)"},
        {scripted(platform::kUTTypeImage, fails),
         "GetItemForExtension kUTTypeImage no luck (Test 7)"},
        {scripted(platform::kUTTypeURL, gives(png())), "GetItemForExtension kUTTypeURL "},
        {scripted(platform::kUTTypeImage, gives(URL::fileURLWithPath("/x"))),
         "GetItemForExtension kUTTypeImage "},
        {ready(std::string("no picture")), "GetItemForExtension kUTTypeImage "},
        {ready(std::shared_ptr<const Bitmap>()), "GetItemForExtension kUTTypeImage "},
        {ready(URL::fileURLWithPath("/missing")), "Error writing file shareFiles "},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.line);
        const auto message = gather({{std::nullopt, std::nullopt, {row.attachment, ready(web())}}});
        EXPECT_THAT(log.lines().back(), StartsWith(row.line));
        EXPECT_EQ(pauses.size(), 1U);
        EXPECT_THAT(attachmentsOf(*message), IsEmpty());
        EXPECT_EQ(message->htmlBody(), "<a href=\"a:b\">a:b</a>");
    }
}

TEST_F(GatheringTest, NothingIsLostWhenManyThreadsAnswerAtOnce) {
    constexpr std::size_t kItems = 32;
    const std::string file = files.writeFile("file", "");
    std::vector<std::thread> threads;
    ExtensionItem item;
    for (std::size_t number = 0; number < kItems; ++number) {
        const Item answer = number % 2 == 0 ? Item(URL::fileURLWithPath(file)) : web();
        item.attachments.push_back(
            scripted(platform::kUTTypeURL, [&, answer](const auto& completion) {
                threads.emplace_back([completion, answer] { completion(answer); });
            }));
    }
    std::shared_ptr<ExtensionMessage> message;
    std::atomic<bool> isDone = false;
    ExtensionUtilities::GetItemForExtension(
        {{item}}, "share", [&](const std::shared_ptr<ExtensionMessage>& draft, int /*error*/) {
            message = draft;
            isDone = true;
        });
    ASSERT_TRUE(waitUntil([&] { return isDone.load(); }));
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(message->attachments()->size(), kItems / 2);
    EXPECT_EQ(stagedNames().size(), kItems / 2);
    EXPECT_EQ(message->htmlBody()->size(), kItems / 2 * 21);
}

}  // namespace
}  // namespace quillet::test
