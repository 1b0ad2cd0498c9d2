#include "tests/widget/StoreFixture.h"

#include "tests/support/PropertyLists.h"

namespace quillet::test {

std::string messageXml(std::string_view messageId, std::int64_t date, std::int64_t folder) {
    return "<dict><key>messageId</key><string>" + std::string(messageId) +
           "</string><key>from</key><string>" + std::string(messageId) +
           "</string><key>account</key><string>a@x</string><key>date</key><integer>" +
           std::to_string(date) + "</integer><key>folderStid</key><integer>" +
           std::to_string(folder) + "</integer></dict>";
}

std::string fileXml(std::string_view messages) {
    return xmlPropertyList(
        "<dict><key>folder</key><string>INBOX</string><key>account</key><string>a@x</string>"
        "<key>data</key><array>" +
        std::string(messages) + "</array></dict>");
}

StoreFixture::StoreFixture()
    : controller(TodayViewController::make({mainQueue, backgroundQueue, defaults, views})) {
    container.writeFile(
        "SharedData/Accounts.plist",
        xmlPropertyList(
            "<array>"
            "<dict><key>mail</key><string>a@x</string><key>enabled</key><true/></dict>"
            "<dict><key>mail</key><string>b@x</string><key>enabled</key><integer>1</integer></dict>"
            "<dict><key>mail</key><string>off@x</string><key>enabled</key><false/></dict>"
            "</array>"));
}

std::vector<std::string> StoreFixture::identifiersOf(const ExtensionMessageList& messages) {
    std::vector<std::string> identifiers;
    if (messages) {
        for (const auto& message : *messages) {
            identifiers.push_back(message->messageId().value_or("none"));
        }
    }
    return identifiers;
}

NCUpdateResult StoreFixture::update() {
    NCUpdateResult result = NCUpdateResultFailed;
    int calls = 0;
    controller->widgetPerformUpdateWithCompletionHandler([&](NCUpdateResult answer) {
        result = answer;
        ++calls;
    });
    EXPECT_EQ(calls, 0);  // never inside the call
    mainQueue.runAll();
    EXPECT_EQ(calls, 1);
    return result;
}

}  // namespace quillet::test
