#include <cerrno>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "app/ContainerCheck.h"
#include "app/ListCommand.h"
#include "tests/support/OrdinaryPermissions.h"
#include "tests/support/PropertyLists.h"
#include "tests/widget/StoreFixture.h"

namespace quillet::test {

using Json = nlohmann::json;

using ListCommandTest = StoreFixture;

TEST_F(ListCommandTest, JsonHoldsEveryFieldWithItsKind) {
    writeFile("a@x", "1.plist", fileXml(R"(<dict><key>messageId</key><string>id</string>
        <key>subject</key><string>"S"
</string>
        <key>date</key><integer>1700000000</integer><key>folderStid</key><integer>12</integer>
        <key>isUnread</key><true/><key>idx</key><integer>-1</integer>
        <key>acc_idx</key><integer>3</integer></dict><string>no message</string>)"));
    Json object = Json::parse(listRows(ListFormat::Json, 0));
    EXPECT_NE(object["messages"][0]["dateString"].get<std::string>(), "");
    object["messages"][0].erase("dateString");
    EXPECT_EQ(object["container"], container.path());
    object.erase("container");
    EXPECT_EQ(object, Json::parse(R"({
        "segment": 0, "result": "NCUpdateResultNewData", "read": 2, "messages": [
            {"messageId": "id", "account": "", "from": "", "subject": "\"S\"\n", "folderPath": "",
             "date": 1.7e9, "folderStandardId": 12, "unread": true,
             "idx": 18446744073709551615, "acc_idx": 3},
            {"messageId": null, "account": null, "from": null, "subject": null, "folderPath": null,
             "dateString": null, "date": null, "folderStandardId": null, "unread": null,
             "idx": 0, "acc_idx": 0}]})"));
}

TEST_F(ListCommandTest, WithoutAContainerThereIsNoData) {
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    const Json object = Json::parse(listRows(ListFormat::Json, 0));
    EXPECT_TRUE(object["container"].is_null());
    EXPECT_EQ(object["result"], "NCUpdateResultNoData");
    EXPECT_EQ(listRows(ListFormat::Text, 0), "No messages\n");
}

TEST_F(ListCommandTest, AContainerThatCannotBeReadIsTold) {
    container.makeFolder("SharedData/Today");
    container.writeFile("file", "");
    EXPECT_FALSE(containerProblem());
    for (const auto& [place, code] :
         {std::pair("missing", ENOENT), {"file", ENOTDIR}, {"file/below", ENOTDIR}}) {
        const EnvironmentVariable variable("QUILLET_CONTAINER", container.path(place));
        EXPECT_EQ(containerProblem().value().code, code) << place;
    }
    const OrdinaryPermissions permissions;
    for (const char* closed : {"SharedData", "SharedData/Today"}) {
        ::chmod(container.path(closed).c_str(), 0);
        const auto problem = containerProblem();
        ::chmod(container.path(closed).c_str(), S_IRWXU);
        EXPECT_EQ(problem.value().code, EACCES) << closed;
    }
}

TEST_F(ListCommandTest, TextCannotDisturbTheTerminal) {
    writeFile("a@x",
              "1.plist",
              fileXml("<dict><key>from</key><string>A&#x9B;31m&#x202E;B</string>"
                      "<key>subject</key><string>one\ntwo</string></dict>"));
    const std::string rows = listRows(ListFormat::Text, 0);
    EXPECT_THAT(rows, ::testing::HasSubstr("A 31mB\n"));
    EXPECT_THAT(rows, ::testing::HasSubstr("one two\n"));
}

}  // namespace quillet::test
