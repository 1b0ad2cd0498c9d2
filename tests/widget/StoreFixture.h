#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/PendingBlocks.h"
#include "platform/desktop/UserDefaults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/OwnContainer.h"
#include "tests/widget/PlainViews.h"
#include "widget/TodayViewController.h"

namespace quillet::test {

// A message dictionary in XML; the sender is named like the message.
std::string messageXml(std::string_view messageId, std::int64_t date, std::int64_t folder = 1);
// A message file in XML with the given message dictionaries.
std::string fileXml(std::string_view messages);

// A container of its own with the enabled accounts "a@x" and "b@x" and the disabled "off@x", and a
// controller over it whose queues run only when told to.
class StoreFixture : public ::testing::Test, protected OwnContainer {
protected:
    StoreFixture();

    std::string writeFile(std::string_view account, std::string_view name, std::string_view bytes) {
        return container.writeFile(
            "SharedData/Today/" + std::string(account) + "/" + std::string(name), bytes);
    }
    static std::vector<std::string> identifiersOf(const ExtensionMessageList& messages);
    std::vector<std::string> read() const {
        return identifiersOf(TodayViewController::updateData());
    }
    std::vector<std::string> shown() const { return identifiersOf(controller->dataToShow()); }
    NCUpdateResult update();

    LogCapture log;
    PendingBlocks mainQueue;
    PendingBlocks backgroundQueue;
    platform::VolatileUserDefaults defaults;
    PlainViews views;
    std::shared_ptr<TodayViewController> controller;
};

}  // namespace quillet::test
