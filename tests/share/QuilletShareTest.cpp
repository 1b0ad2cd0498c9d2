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
    static std::string parameter(const std::string& url, const std::string& key) {
        const ParameterMap map = RequestUtils::URLQueryParameters(url);
        const auto* value = map.find(key);
        return value != nullptr ? std::get<std::string>(*value) : "none";
    }

    std::vector<std::string> folders(const std::string& place = "SharedData") const {
        return platform::FileManager::contentsOfFolder(container.path(place)).value();
    }
};

TEST_F(QuilletShareTest, WhatIsSharedReachesTheHostInTheForeground) {
    const RecordingApplication host(QStringLiteral("it.tarno.quillet"));
    const std::string file = files.writeFile("a.txt", "text");
    const Outcome outcome = share(
        {file, "https://x.example", "-", "--title", "T & t", "--to=a@x", "--to=b@x"}, "Zo\u00EB");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    ASSERT_EQ(host.requests().size(), 1U);
    const auto& request = host.requests().front();
    EXPECT_TRUE(request.platformData.contains(QStringLiteral("activation-token")));
    ASSERT_EQ(request.urls.size(), 1U);
    const std::string& url = request.urls.front();
    EXPECT_THAT(url, StartsWith("quillet://compose?"));
    EXPECT_EQ(parameter(url, "subject"), "T & t");
    EXPECT_EQ(parameter(url, "to"), "a@x;b@x;");
    EXPECT_EQ(parameter(url, "htmlBody"),
              "<a href=\"https://x.example\">https://x.example</a> <br/>Zo\u00EB<br/>");
    EXPECT_EQ(contents(parameter(url, "attachment_0")), "text");
}

TEST_F(QuilletShareTest, UrlIsPrintedAndTheFolderAskedForIsUsed) {
    const std::string file = files.writeFile("a.txt", "text");
    container.writeFile("SharedData/share/old", "");
    const Outcome outcome = share({"--print", "--service=share", "--command=send", file});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("quillet://send?attachment_0="));
    EXPECT_THAT(stagedNames(), ElementsAre("a.txt"));
    EXPECT_EQ(share({"--print", "--service=new", file}).errors, "");
}

TEST_F(QuilletShareTest, WhatCannotBeSharedIsToldAndTheRestIsShared) {
    container.makeFolder("SharedData");
    const std::string file = files.writeFile("a.txt", "text");
    const struct {
        std::vector<std::string> arguments;
        std::string input;
        const char* error;
        bool isShared;
    } cases[] = {
        {{"--print", "/no/such", file}, "", "quillet-share: \"/no/such\" is neither", true},
        {{"--print", "--service=Today", file}, "", "shareInit \"Today\"", false},
        {{"--print", "-"}, "", "quillet-share: standard input is empty", false},
        {{"--print", "-"}, std::string("\x89PNG\r\n\x1A\n\0", 9), "GetItemForExtension", false},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.error);
        const std::size_t before = folders().size();
        const Outcome outcome = share(row.arguments, row.input);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr(row.error));
        EXPECT_EQ(outcome.output.empty(), !row.isShared);
        EXPECT_EQ(folders().size(), before + (row.isShared ? 1 : 0));
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
        const Outcome outcome = share({option, files.writeFile("a.txt", "text")});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, HasSubstr("did not take the draft"));
        EXPECT_THAT(folders(), IsEmpty());
    }
}

TEST_F(QuilletShareTest, AnAttachmentWhoseFolderNoUrlCanNameIsAFailure) {
    const std::string file = files.writeFile("a.txt", "text");
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
