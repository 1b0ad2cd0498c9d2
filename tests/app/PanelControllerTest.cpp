#include <gmock/gmock.h>

#include "app/PanelController.h"
#include "platform/desktop/Queues.h"
#include "tests/support/WaitUntil.h"
#include "tests/widget/StoreFixture.h"

namespace quillet::test {

using ::testing::ElementsAre;

class PanelControllerTest : public StoreFixture {
protected:
    ~PanelControllerTest() override {
        platform::drainBackgroundQueue();
        QCoreApplication::sendPostedEvents();
    }

    static std::vector<std::string> rows(PanelController& panel) {
        return identifiersOf(panel.widget().dataToShow());
    }

    TemporaryFolder config;
    EnvironmentVariable configVariable{"XDG_CONFIG_HOME", config.path()};
};

TEST_F(PanelControllerTest, AppearsWithItsRowsAndFollowsTheStore) {
    writeFile("a@x", "1.plist", fileXml(messageXml("m", 1)));
    PanelController panel(platform::Look::Dark);
    EXPECT_FALSE(panel.isShown());
    panel.show();
    ASSERT_TRUE(waitUntil([&] { return panel.isShown(); }));
    EXPECT_THAT(rows(panel), ElementsAre("m"));
    EXPECT_EQ(panel.widget().viewHeightContraint()->presentedConstant(), 60);
    EXPECT_TRUE(panel.widget().legacyDarkBackground());

    writeFile("a@x", "2.plist", fileXml(messageXml("n", 1000)));
    EXPECT_TRUE(waitUntil([&] { return rows(panel).size() == 2; })) << "no reread on a change";
}

TEST_F(PanelControllerTest, HidingBeforeThePanelIsUpKeepsItDown) {
    PanelController panel(platform::Look::Light);
    panel.toggle();
    panel.toggle();
    bool turned = false;
    platform::mainQueue().async([&] {
        platform::mainQueue().async([&] { platform::mainQueue().async([&] { turned = true; }); });
    });
    ASSERT_TRUE(waitUntil([&] { return turned; }));
    EXPECT_FALSE(panel.isShown());
    panel.toggle();
    EXPECT_TRUE(waitUntil([&] { return panel.isShown(); }));
}

TEST_F(PanelControllerTest, PanelThatEndsWhileItAppearsIsNotTouchedAgain) {
    std::optional<PanelController> panel(std::in_place, platform::Look::Light);
    panel->show();
    QCoreApplication::processEvents();
    panel.reset();
    QCoreApplication::sendPostedEvents();
}

TEST_F(PanelControllerTest, WithoutAContainerThePanelStillAppears) {
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
    PanelController panel(std::nullopt);
    panel.show();
    EXPECT_TRUE(waitUntil([&] { return panel.isShown(); }));
    EXPECT_TRUE(waitUntil([&] { return panel.widget().viewHeightContraint()->constant() == 0; }));
}

}  // namespace quillet::test
