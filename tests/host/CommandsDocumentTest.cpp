// Runs the complete host of docs/commands.md, which host authors paste into a file.

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "host/StoreWriter.h"
#include "platform/desktop/DistributedNotificationCenter.h"
#include "tests/support/DocumentExample.h"
#include "tests/support/OwnContainer.h"
#include "tests/support/WaitUntil.h"

namespace quillet::host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string kFile = "Today/anna+x@example.com/INBOX.plist";

Value message(const char* messageId) {
    return Dictionary{{"messageId", messageId}, {"subject", "Hello"}};
}

class CommandsDocument : public testing::Test, protected test::OwnContainer {};

TEST_F(CommandsDocument, CompleteHostTakesADeletedMessageOutAndTellsTheWidget) {
    const std::vector<StoreFile> files{{kFile,
                                        Dictionary{{"account", "anna+x@example.com"},
                                                   {"folder", "INBOX"},
                                                   {"data",
                                                    Array{Dictionary{{"subject", "Without"}},
                                                          message("1+1@x"),
                                                          message("2%41@x"),
                                                          message("3@x")}}},
                                        PropertyListFormat::Xml}};
    ASSERT_FALSE(writeStore(container.path(), files));
    int notifications = 0;
    auto& center = platform::DistributedNotificationCenter::defaultCenter();
    center.addObserver(&notifications,
                       "k_today_widget_key",
                       "k_today_widget_object",
                       [&](const auto&, const auto&) { ++notifications; });
    const std::string example = test::documentExample("commands.md", "python");
    ASSERT_NE(example, "");
    QProcess host;
    host.setProcessChannelMode(QProcess::MergedChannels);
    host.start(QStringLiteral("/usr/bin/python3"),
               {QString::fromStdString(container.writeFile("host.py", example)),
                QString::fromStdString(container.path())});
    const QString name = QStringLiteral("it.tarno.quillet");
    QDBusConnection bus = QDBusConnection::sessionBus();
    ASSERT_TRUE(test::waitUntil([&] { return bus.interface()->isServiceRegistered(name); }))
        << host.readAll().toStdString();

    QDBusMessage open =
        QDBusMessage::createMethodCall(name,
                                       QStringLiteral("/it/tarno/quillet"),
                                       QStringLiteral("org.freedesktop.Application"),
                                       QStringLiteral("Open"));
    const QString start = QStringLiteral("quillet://delete?mail=anna%2Bx%40example.com&messageid=");
    const QString end = QStringLiteral("&folderstandardid=1");
    open << QStringList{start + QStringLiteral("1+1@x") + end,
                        start + QStringLiteral("2%41@x") + end,
                        start + QStringLiteral("4@x") + end}
         << QVariantMap{{QStringLiteral("x-quillet-background"), true}};
    EXPECT_EQ(bus.call(open).type(), QDBusMessage::ReplyMessage) << host.readAll().toStdString();
    EXPECT_TRUE(test::waitUntil([&] { return notifications > 0; }));
    EXPECT_THAT(test::contentsOf(container.path(kFile)),
                AllOf(HasSubstr("Without"),
                      HasSubstr("3@x"),
                      Not(HasSubstr("1+1@x")),
                      Not(HasSubstr("2%41@x"))));
    host.kill();
    host.waitForFinished();
    center.removeObserver(&notifications);
}

}  // namespace
}  // namespace quillet::host
