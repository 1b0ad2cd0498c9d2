#include <QTest>
#include <gmock/gmock.h>

#include "app/PanelController.h"
#include "platform/desktop/Queues.h"
#include "platform/ui/SegmentedControl.h"
#include "tests/support/CalledActions.h"
#include "tests/support/WaitUntil.h"
#include "tests/widget/StoreFixture.h"
#include "views/TodayHeaderView.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"

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

    static TodayTableView& table(PanelController& panel) {
        return static_cast<TodayTableView&>(*panel.widget().myTableView());
    }
    static std::string messageAt(PanelController& panel, std::ptrdiff_t row) {
        const auto* cell =
            static_cast<TodayTableViewCell*>(table(panel).cellAtRow(static_cast<std::size_t>(row)));
        return cell == nullptr ? "none" : cell->message()->messageId().value_or("");
    }
    // Where the keyboard is: "panel", "header", "row m" or "Reply of m", with "!" if it is visible.
    static std::string keyboard(PanelController& panel) {
        QWidget* focused = panel.panel().focusWidget();
        const auto* header = panel.widget().myHeaderView()->control();
        const std::ptrdiff_t row = table(panel).currentRow();
        const std::string message = messageAt(panel, row);
        if (header->isAncestorOf(focused)) {
            return header->showsFocus() ? "header!" : "header";
        }
        if (focused == &table(panel)) {
            const auto* view = table(panel).rowViewAtRow(static_cast<std::size_t>(row));
            return "row " + message + (view->hasKeyboardMark() ? "!" : "");
        }
        return focused == &panel.panel() || focused == nullptr
                   ? "panel"
                   : focused->accessibleName().toStdString() + " of " + message;
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

TEST_F(PanelControllerTest, AnotherLookKeepsSelectionAndKeyboardWithTheirMessages) {
    using namespace Qt;
    const struct {
        std::vector<Qt::Key> keys;
        const char* keyboard;
        const char* afterwards;
    } cases[] = {
        {{}, "panel", "panel"},
        {{Key_Tab}, "header!", "header!"},
        {{Key_Tab, Key_Tab, Key_End}, "row b!", "row b!"},
        {{Key_Tab, Key_Tab, Key_End, Key_Tab, Key_Tab}, "Archive of b", "Archive of b"},
        {{Key_Tab, Key_Tab, Key_Tab}, "Reply of gone", "row newer!"},
    };
    const QPalette light = QGuiApplication::palette();
    for (const auto& [keys, before, afterwards] : cases) {
        SCOPED_TRACE(before);
        const std::string messages = messageXml("a", 2000) + messageXml("b", 1000);
        writeFile("a@x", "1.plist", fileXml(messageXml("gone", 3000) + messages));
        PanelController panel(std::nullopt);
        panel.show();
        ASSERT_TRUE(waitUntil([&] { return panel.isShown() && panel.panel().isActiveWindow(); }));
        for (const Qt::Key key : keys) {
            QTest::keyClick(panel.panel().windowHandle(), key);
        }
        table(panel).setSelectedRow(2);
        ASSERT_EQ(keyboard(panel), before);

        const CalledActions called;
        writeFile("a@x",
                  "1.plist",
                  fileXml(messageXml("newer", 5000) + messageXml("new", 4000) + messages));
        QGuiApplication::setPalette(QPalette(Qt::black));
        EXPECT_TRUE(waitUntil([&] { return panel.widget().legacyDarkBackground(); }));
        QGuiApplication::setPalette(light);
        EXPECT_EQ(keyboard(panel), afterwards);
        EXPECT_EQ(messageAt(panel, table(panel).selectedRow()), "b");
        EXPECT_THAT(called.names(), testing::IsEmpty());
    }
}

TEST_F(PanelControllerTest, HidingBeforeThePanelIsUpKeepsItDownAndItNeedsNoContainer) {
    const EnvironmentVariable none("QUILLET_CONTAINER", "");
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
    EXPECT_TRUE(waitUntil(
        [&] { return panel.isShown() && panel.widget().viewHeightContraint()->constant() == 0; }));
}

TEST_F(PanelControllerTest, PanelThatEndsWhileItAppearsIsNotTouchedAgain) {
    std::optional<PanelController> panel(std::in_place, platform::Look::Light);
    panel->show();
    QCoreApplication::processEvents();
    panel.reset();
    QCoreApplication::sendPostedEvents();
}

}  // namespace quillet::test
