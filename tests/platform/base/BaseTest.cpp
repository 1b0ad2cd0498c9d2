#include <atomic>
#include <gtest/gtest.h>
#include <thread>

#include "platform/base/Log.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/TextFormat.h"
#include "tests/support/LogCapture.h"

namespace quillet::test {

using platform::formatText;
using platform::Notification;
using platform::NotificationCenter;

TEST(TextFormat, ArgumentsTakeTheirPlacesInOrder) {
    EXPECT_EQ(formatText("%@ is %lu of %ld, %@", {"%@", "1", "-2"}), "%@ is 1 of -2, (null)");
    EXPECT_EQ(formatText("100%% %d %", {"surplus"}), "100% %d %");
}

TEST(Log, StandardErrorGetsOneLineWhateverTheTextHoldsAndASinkTheTextAsItIs) {
    testing::internal::CaptureStderr();
    platform::Log::write("a\nb\x1b[31m%@",
                         {"\r\x7f é\u009B1m \u202Etxt\u2069 日 \x9B"
                          "J \xE2\x80"});
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "a b [31m   é 1m  txt  日 \uFFFDJ \uFFFD\uFFFD\n");
    const LogCapture log;
    platform::Log::write("two\nlines %@", {"\x1b"});
    EXPECT_EQ(log.lines(), std::vector<std::string>{"two\nlines \x1b"});
}

TEST(NotificationCenter, ObserversAreCalledInTheOrderOfRegistrationUnlessTheyWereRemoved) {
    NotificationCenter center;
    std::string called;
    const auto adding = [&called](const char* text) {
        return [&called, text](const Notification&) { called += text; };
    };
    const char first = '1';
    const char second = '2';
    center.addObserver(&second, "other", adding("other"));
    center.addObserver(&first, "name", [&](const Notification& posted) {
        called += posted.name + std::any_cast<std::string>(posted.object);
        center.removeObserver(&second);
        center.removeObserver(&first);
        center.addObserver(&first, "name", adding(" late"));
        center.addObserver(&second, "name", adding(" last"));
    });
    center.addObserver(&second, "name", adding("removed"));
    center.postNotification("name", std::string(" object"));
    EXPECT_EQ(called, "name object");
    center.postNotification("name");
    EXPECT_EQ(called, "name object late last");
}

TEST(NotificationCenter, ThreadsMayRegisterPostAndRemoveAtOnce) {
    NotificationCenter center;
    std::atomic<int> count{0};
    center.addObserver(&center, "name", [&](const Notification&) { ++count; });
    const auto use = [&](const int mine) {
        for (int round = 0; round < 200; ++round) {
            center.addObserver(&mine, "name", [](const Notification&) {});
            center.postNotification("name");
            center.removeObserver(&mine);
        }
    };
    std::jthread other(use, 1);
    use(2);
    other.join();
    EXPECT_EQ(count, 400);
}

}  // namespace quillet::test
