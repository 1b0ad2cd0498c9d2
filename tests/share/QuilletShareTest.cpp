// The real program, in processes of its own.

#include <gmock/gmock.h>

#include "model/ExtensionMessage.h"
#include "tests/handoff/ContainerFixture.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/RecordingApplication.h"
#include "util/RequestUtils.h"

namespace quillet::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

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
