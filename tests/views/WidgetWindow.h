#pragma once

#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "platform/ui/SegmentedControl.h"
#include "views/TodayHeaderView.h"
#include "views/TodayTableView.h"
#include "views/TodayTableViewCell.h"
#include "views/TodayWidgetFactory.h"
#include "widget/TodayViewController.h"

namespace quillet::test {

using Messages = std::vector<std::shared_ptr<ExtensionMessage>>;

inline std::shared_ptr<ExtensionMessage> makeMessage(const std::string& from,
                                                     const std::string& subject,
                                                     const std::string& date) {
    auto message = ExtensionMessage::init();
    message->setFrom(from);
    message->setSubject(subject);
    message->setDateString(date);
    message->setMessageId(from + subject);
    message->setAccount("me@example.org");
    return message;
}

// Keeps what it is given and runs nothing.
struct HeldQueue final : platform::Queue {
    void async(Block block) override { blocks.push_back(std::move(block)); }
    std::vector<Block> blocks;
};

// A controller's whole tree in a shown window that is white, or black in the dark look.
struct WidgetWindow {
    explicit WidgetWindow(bool dark = false) {
        window.setPalette(QPalette(Qt::gray, dark ? Qt::black : Qt::white));
        window.resize(320, 700);
        controller->setDarkAppearance(dark);
        controller->view()->setParent(&window);
        table().setClock([this] { return now; });
        window.show();
        QCoreApplication::processEvents();
    }

    // Shows messages as a rebuilt list does, without animation.
    void show(Messages messages) {
        const auto rows = static_cast<double>(messages.size());
        controller->setDataToShow(std::make_shared<const Messages>(std::move(messages)));
        table().reloadData();
        controller->viewHeightContraint()->setConstant(rows * table().rowHeight());
        now += std::chrono::seconds(1);  // presses act on rows that have been seen for a while
        QCoreApplication::processEvents();
    }

    void click(const QWidget& view, QPoint at) {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, view.mapTo(&window, at));
        QCoreApplication::processEvents();
    }
    void click(const QWidget& view) { click(view, view.rect().center()); }

    QRect frame(const QWidget& view) const { return {view.mapTo(&window, QPoint()), view.size()}; }
    // What the window shows at the view's place.
    QImage picture(const QWidget& view) {
        return window.grab(frame(view)).toImage().convertToFormat(QImage::Format_RGB32);
    }

    TodayHeaderView& header() { return *controller->myHeaderView(); }
    platform::SegmentedControl& control() { return *header().control(); }
    TodayTableView& table() { return static_cast<TodayTableView&>(*controller->myTableView()); }
    TodayTableViewCell& cell(std::size_t row) {
        return static_cast<TodayTableViewCell&>(*table().cellAtRow(row));
    }

    std::chrono::steady_clock::time_point now;  // the table's clock
    platform::VolatileUserDefaults defaults;
    HeldQueue mainQueue;
    HeldQueue backgroundQueue;
    QWidget window;
    std::shared_ptr<TodayViewController> controller = TodayViewController::make(
        {mainQueue, backgroundQueue, defaults, TodayWidgetFactory::shared()});
};

}  // namespace quillet::test
