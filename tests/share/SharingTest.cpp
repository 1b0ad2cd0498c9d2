#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <filesystem>
#include <gmock/gmock.h>
#include <tuple>

#include "share/ShareStaging.h"
#include "share/SharedItems.h"

#include "tests/handoff/ContainerFixture.h"
#include "tests/support/CoordinatingProcess.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/RecordingApplication.h"
#include "util/RequestUtils.h"

namespace quillet::test {
namespace {

using platform::ExtensionItem;
using platform::Item;
using platform::Result;
using platform::URL;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

// Describes an item.
std::string textOf(const Result<ExtensionItem>& item) {
    if (!item) {
        return "error " + item.error().text;
    }
    if (const auto& text = item.value().attributedContentText) {
        return text->html ? "html " + *text->html : "text " + text->string;
    }
    std::string result = "image";
    const auto& attachment = item.value().attachments.at(0);
    attachment->loadItem(platform::kUTTypeURL, [&result](const Result<Item>& loaded) {
        if (const URL* url = loaded ? std::get_if<URL>(&loaded.value()) : nullptr) {
            result = url->isFileURL() ? "file " + url->path() : "link " + url->absoluteString();
        }
    });
    attachment->loadItem(platform::kUTTypeImage, [&result](const Result<Item>& loaded) {
        result += loaded && std::holds_alternative<std::string>(loaded.value()) ? " data" : "";
    });
    return result;
}

TEST(SharedItems, AWordIsAFileOrALink) {
    const TemporaryFolder folder;
    const std::string file = folder.writeFile("50% (1)", "");
    const std::string badName = folder.writeFile("\xFF", "");
    const std::pair<std::string, std::string> cases[] = {
        {file, "file " + file},
        {URL::fileURLWithPath(file).absoluteString(), "file " + file},
        {"https://x.example/a?b=c#d.", "link https://x.example/a?b=c#d."},
        {"www.x.example", "link http://www.x.example"},
        {"https://x.example/\u00E4", "link https://x.example/%C3%A4"},
        {"mailto:a@x.example", "link mailto:a@x.example"},
        {"javascript:x", "error \"javascript:x\" is neither a file nor a web link"},
        {"see www.x.de", "error \"see www.x.de\" is neither a file nor a web link"},
        {"", "error \"\" is neither a file nor a web link"},
        {"file:///no/such", "error there is no file /no/such"},
        {folder.path(), "error " + folder.path() + " is a folder; only files can be shared"},
        {badName, "error the name of " + badName + " is not UTF-8; rename the file"},
    };
    for (const auto& [word, expected] : cases) {
        EXPECT_EQ(textOf(itemOfWord(word)), expected);
    }
}

TEST(SharedItems, BytesAreTakenByTheirContentOrAsTold) {
    using enum TextKind;
    const std::string gif("GIF89a\1\0\1\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\1D\0;", 26);
    const std::string unusable = "error the input is neither a text nor a picture";
    const std::tuple<std::string, TextKind, std::string> cases[] = {
        {"a < b\n", ByContent, "text a < b"},
        {" <p>a</p>", ByContent, "html  <p>a</p>"},
        {"press <b>\nthen c", ByContent, "text press <b>\nthen c"},
        {"<a@x.example>", ByContent, "html &lt;<a href=\"mailto:a@x.example\">a@x.example</a>&gt;"},
        {"<p>a</p>", Plain, "text <p>a</p>"},
        {"www.x.example", Html, "html www.x.example"},
        {"\xEF\xBB\xBFZo\u00EB", ByContent, "text Zo\u00EB"},
        {std::string("\xFF\xFEx\0\xEB\0", 6), ByContent, "text x\u00EB"},
        {"Zo\xEB", ByContent, "text Zo\u00EB"},
        {"P1 is broken", ByContent, "text P1 is broken"},
        {gif, ByContent, "image data"},
        {gif, Plain, unusable},
        {std::string("a\0b", 3), ByContent, unusable},
        {" \n", ByContent, "error the input is empty"},
        {"", Html, "error the input is empty"},
    };
    for (const auto& [bytes, kind, expected] : cases) {
        EXPECT_EQ(textOf(itemOfBytes(bytes, kind, "the input")), expected);
    }
}

TEST(SharedItems, ClipboardGivesItsRichestItemOrTheTextAskedFor) {
    const auto shared = [](TextKind kind = TextKind::ByContent) {
        std::string result;
        for (const auto& item : itemsOfClipboard(kind)) {
            result += textOf(item) + "; ";
        }
        return result;
    };
    auto* data = new QMimeData;  // the clipboard takes it over
    QGuiApplication::clipboard()->setMimeData(data);
    EXPECT_EQ(shared(), "");
    data->setText("plain");
    EXPECT_EQ(shared(), "text plain; ");
    data->setHtml("<i>rich</i>");
    EXPECT_EQ(shared(), "html <i>rich</i>; ");
    data->setImageData(QImage(3, 1, QImage::Format_RGB888));
    EXPECT_EQ(shared(), "image; ");
    data->setData("text/uri-list", "# two\r\nfile:///etc/hosts\r\na:b\r\n");
    EXPECT_EQ(shared(), "file /etc/hosts; error \"a:b\" is neither a file nor a web link; ");
    EXPECT_EQ(shared(TextKind::Html), "html <i>rich</i>; ");
    EXPECT_EQ(shared(TextKind::Plain), "text plain; ");
}

class ShareStagingTest : public ContainerFixture {
protected:
    std::vector<std::string> names() const {
        return platform::FileManager::contentsOfFolder(data).value();
    }

    std::string data = container.path("SharedData");
};

TEST_F(ShareStagingTest, OnlyOwnFoldersGoAfterADayAndOneThatIsReadIsNotWaitedFor) {
    std::vector<std::string> kept{"Share-1-", "Share-1-2x", "Share-1-02", "Share--1-2"};
    kept.insert(kept.end(), {"Share-x-1", "Share-913599-23", "Share-913601-1", "Share-913599-22"});
    for (const std::string& name : kept) {
        std::filesystem::rename(ShareStaging::inOwnFolder({}).folder(), data + "/" + name);
    }
    kept.back() = "Share-913599-24";  // not made by the program
    ShareStaging::inFolderOf(kept.back());
    const CoordinatingProcess host(data, data + "/Share-913599-23", Access::Read);
    ASSERT_TRUE(waitUntil([&] { return host.isInside(); }));
    const std::chrono::system_clock::time_point now{std::chrono::seconds(1'000'000)};
    kept.push_back(ShareStaging::inOwnFolder(now).service());
    EXPECT_THAT(names(), testing::UnorderedElementsAreArray(kept));
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(ShareStagingTest, AFolderThatOthersUseIsLeftToThem) {
    const ShareStaging staging = ShareStaging::inFolderOf("share");
    const std::string copy = container.writeFile("SharedData/share/copy", "");
    container.writeFile("SharedData/share/other", "");
    staging.abandon();
    staging.discard({copy});
    EXPECT_THAT(stagedNames(), ElementsAre("other"));
    container.makeFolder("SharedData/Today");
    ShareStaging::inFolderOf("Today").discard({});
    EXPECT_THAT(names(), UnorderedElementsAre("share", "Today"));
}

// The real program, in processes of its own.
class QuilletShareTest : public ContainerFixture {
protected:
    static Outcome share(const std::vector<std::string>& arguments, const std::string& input = {}) {
        return runProgram("quillet-share", arguments, input);
    }
    std::vector<std::string> folders(const std::string& place = "SharedData") const {
        return platform::FileManager::contentsOfFolder(container.path(place)).value();
    }

    std::string file = files.writeFile("a.txt", "text");
};

TEST_F(QuilletShareTest, WhatIsSharedReachesTheHostInTheForeground) {
    const RecordingApplication host("it.tarno.quillet");
    const Outcome outcome = share(
        {file, "https://x.example", "-", "--title", "T & t", "--to=a@x", "--to=b@x"}, "Zo\u00EB");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    ASSERT_TRUE(host.gets(1));
    const auto& request = host.requests().front();
    EXPECT_TRUE(request.platformData.contains("activation-token"));
    EXPECT_THAT(request.urls, ElementsAre(StartsWith("quillet://compose?")));
    const ParameterMap map = RequestUtils::URLQueryParameters(request.urls.at(0));
    const auto parameter = [&map](const char* key) {
        return std::get<std::string>(*map.find(key));
    };
    EXPECT_EQ(parameter("subject"), "T & t");
    EXPECT_EQ(parameter("to"), "a@x;b@x;");
    EXPECT_EQ(parameter("htmlBody"),
              "<a href=\"https://x.example\">https://x.example</a> <br/>Zo\u00EB<br/>");
    EXPECT_EQ(contents(parameter("attachment_0")), "text");
}

TEST_F(QuilletShareTest, UrlIsPrintedAndTheFolderAskedForIsUsed) {
    container.writeFile("SharedData/share/old", "");
    const Outcome outcome = share({"--print", "--service=share", "--command=send", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("quillet://send?attachment_0="));
    EXPECT_THAT(stagedNames(), ElementsAre("a.txt"));
    EXPECT_EQ(share({"--print", "--service=new", file}).errors, "");
}

TEST_F(QuilletShareTest, WhatCannotBeSharedIsToldAndTheRestIsShared) {
    container.makeFolder("SharedData");
    const std::string brokenPicture("\x89PNG\r\n\x1A\n\0", 9);
    const std::tuple<std::vector<std::string>, std::string, const char*, std::size_t> cases[] = {
        {{"--service=Today", file}, "", "shareInit \"Today\"", 0},
        {{"-"}, "", "quillet-share: standard input is empty", 0},
        {{"-"}, brokenPicture, "GetItemForExtension", 0},
        {{"/no/such", file}, "", "quillet-share: \"/no/such\" is neither", 1},
    };
    for (const auto& [arguments, input, error, shared] : cases) {
        SCOPED_TRACE(error);
        std::vector<std::string> words{"--print"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const Outcome outcome = share(words, input);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr(error));
        EXPECT_EQ(outcome.output.empty(), shared == 0);
        EXPECT_EQ(folders().size(), shared);
    }
    // This check comes before anything is staged.
    EXPECT_EQ(share({"--service=Today", file}).errors,
              "quillet-share: there is no mail application it.tarno.quillet\n");
}

TEST_F(QuilletShareTest, WhatTheHostDoesNotTakeIsRemoved) {
    PrivateBus daemon;
    daemon.addService("it.tarno.quillet", "/bin/false");
    const EnvironmentVariable address("DBUS_SESSION_BUS_ADDRESS", daemon.address());
    ASSERT_TRUE(daemon.start());
    for (const char* option : {"--html", "--service=share"}) {
        const Outcome outcome = share({option, file});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr("did not take the draft"));
        EXPECT_THAT(folders(), IsEmpty());
    }
}

TEST_F(QuilletShareTest, AnAttachmentWhoseFolderNoUrlCanNameIsAFailure) {
    const std::string folder = container.makeFolder("\xFF");
    const EnvironmentVariable notUtf8("QUILLET_CONTAINER", folder);
    for (const bool withText : {false, true}) {
        const Outcome outcome = share({"--print", file, withText ? "-" : file}, "text");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, StartsWith("queryUrl /"));
        EXPECT_EQ(outcome.output, withText ? "quillet://compose?htmlBody=text%3Cbr%2F%3E\n" : "");
        EXPECT_THAT(folders("\xFF/SharedData"), IsEmpty());
    }
}

}  // namespace
}  // namespace quillet::test
