#include <QBuffer>
#include <QImage>
#include <algorithm>
#include <future>
#include <gmock/gmock.h>
#include <thread>

#include "handoff/GatherItems.h"
#include "handoff/Staging.h"
#include "tests/handoff/ContainerFixture.h"

namespace quillet::test {
namespace {

using platform::Bitmap;
using platform::ExtensionItem;
using platform::Item;
using platform::ItemProvider;
using platform::ReadyItemProvider;
using platform::StyledText;
using platform::URL;
using testing::ElementsAre;
using testing::StartsWith;

using Answer = std::function<void(const ItemProvider::Completion&)>;
using Provider = std::shared_ptr<ItemProvider>;

const Item kLink = URL::URLWithString("a:b").value();
constexpr std::string_view kAnchor = "<a href=\"a:b\">a:b</a>";

Provider ready(Item item) {
    return std::make_shared<ReadyItemProvider>(std::move(item));
}

// A provider of one type that answers as the test says.
class Scripted final : public ItemProvider {
public:
    Scripted(std::string_view type, Answer answer) : type_(type), answer_(std::move(answer)) {}
    bool hasItemConformingToTypeIdentifier(std::string_view type) const override {
        return type == type_;
    }
    void loadItem(std::string_view /*type*/, Completion done) override { answer_(done); }

private:
    std::string type_;
    Answer answer_;
};

Provider link(Answer answer) {
    return std::make_shared<Scripted>(platform::kUTTypeURL, std::move(answer));
}

Provider image(const Bitmap& bitmap) {
    return ready(std::make_shared<const Bitmap>(bitmap));
}

std::string pictureFile(const char* format) {
    QBuffer file;
    QImage(2, 1, QImage::Format_RGB32).save(&file, format);
    return file.data().toStdString();
}

Answer gives(const platform::Result<Item>& item) {
    return [item](const ItemProvider::Completion& done) { done(item); };
}

class GatheringTest : public ContainerFixture {
protected:
    GatheringTest() { ExtensionUtilities::ShareInit("share"); }

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
    const std::string attached[] = {"50% of it.txt", "image.png", "image_1.png"};
    for (std::size_t at = 0; at < std::size(attached); ++at) {
        EXPECT_EQ(std::any_cast<std::string>(draft->attachments()->at(at)), staged(attached[at]));
    }
    EXPECT_EQ(contents(staged("50% of it.txt")), "text");
    EXPECT_EQ(QImage(QString::fromStdString(staged("image.png"))).size(), QSize(2, 1));
    EXPECT_EQ(QImage(QString::fromStdString(staged("image_1.png"))).pixel(0, 0), qRgb(1, 2, 3));
}

TEST_F(GatheringTest, TheWaitEndsWithTheLastItemOrAtItsLimit) {
    const auto later = link([this](const auto& done) { inThirdPause = done; });
    ItemProvider::Completion abandoned;
    const auto never = link([&](const auto& done) { abandoned = done; });
    const auto twice = link([](const auto& done) {
        done(kLink);
        done(kLink);
    });
    const auto neither = std::make_shared<Scripted>("public.text", gives(kLink));
    const struct {
        const char* name;
        std::vector<Provider> attachments;
        std::size_t pauses, links;
    } cases[] = {
        {"nothing", {}, 1, 0},
        {"answers in the third pause", {later}, 3, 1},
        {"never answers", {never, ready(kLink)}, 101, 1},
        {"of neither type", {neither}, 101, 0},
        {"no provider", {nullptr}, 101, 0},
        {"answers twice", {twice}, 1, 1},
        {"one answers twice, the other later", {twice, later}, 3, 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const auto draft = gather({{std::nullopt, std::nullopt, row.attachments}});
        EXPECT_EQ(pauses.size(), row.pauses);
        EXPECT_EQ(draft->htmlBody()->size(), row.links * kAnchor.size());
        if (const auto done = std::exchange(abandoned, nullptr)) {
            done(kLink);  // an answer after the end still changes the draft
            EXPECT_EQ(draft->htmlBody()->size(), (row.links + 1) * kAnchor.size());
        }
    }
}

TEST_F(GatheringTest, WhatCannotBeLoadedIsLoggedAndLeavesTheRest) {
    const platform::Error error{"Test", 7, "no luck"};
    // Claims 60,000 by 60,000 pixels.
    const std::string huge =
        pictureFile("bmp").replace(18, 8, std::string("\x60\xEA\0\0\x60\xEA\0\0", 8));
    const auto other = [](const platform::Result<Item>& item) {
        return std::make_shared<Scripted>(platform::kUTTypeImage, gives(item));
    };
    const std::string url = "GetItemForExtension kUTTypeURL ";
    const std::string picture = "GetItemForExtension kUTTypeImage ";
    const std::pair<Provider, std::string> cases[] = {
        {link(gives(error)), url + "no luck"},
        {link(gives(Item("x"))), url},
        {other(error), picture + "no luck"},
        {other(kLink), picture},
        {ready(pictureFile("png").substr(0, 60)), picture},
        {ready(huge), picture},
        {image({}), picture},
        {image({1, 1, {0}}), picture},
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
        item.attachments.push_back(link([&, number](const auto& done) {
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
