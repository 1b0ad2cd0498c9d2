// Looks at the window of an unchanged program that runs without a display, and clicks in it. The
// toolkit loads it as an input device. Each line of standard input is one command. The answer is
// one line of JSON with the rows that the window shows and the height of their table.
//   state                 does nothing else
//   click ROW [BUTTON]    clicks on the button in the row, or on the row, once the row stands still
//   press ROW [BUTTON]    the same without the release
//   release               releases where the last press was
// The program ends when its standard input ends.

#include <QAccessible>
#include <QGenericPlugin>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QTest>
#include <QWindow>
#include <iostream>
#include <string>
#include <unistd.h>

namespace quillet::test {

// The first match among a view and its descendants, as screen readers know them; null if none.
template <typename Condition>
QAccessibleInterface* firstIn(QAccessibleInterface* view, Condition isMeant) {
    if (view == nullptr || isMeant(*view)) {
        return view;
    }
    QAccessibleInterface* found = nullptr;
    for (int i = 0; found == nullptr && i < view->childCount(); ++i) {
        found = firstIn(view->child(i), isMeant);
    }
    return found;
}

class WindowDriverPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "WindowDriver.json")

public:
    QObject* create(const QString& /*key*/, const QString& /*options*/) override {
        auto* input = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read);
        connect(input, &QSocketNotifier::activated, this, [this, input] {
            if (std::string line; std::getline(std::cin, line)) {
                const QJsonDocument answer(answerTo(QString::fromStdString(line).split(' ')));
                std::cout << answer.toJson(QJsonDocument::Compact).constData() << std::endl;
            } else {
                input->setEnabled(false);
                QCoreApplication::quit();
            }
        });
        return input;
    }

private:
    QJsonObject answerTo(const QStringList& words) {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            auto* list = firstIn(window->isVisible() ? window->accessibleRoot() : nullptr,
                                 [](auto& view) { return view.role() == QAccessible::List; });
            if (list != nullptr) {
                return answerIn(*window, *list, words);
            }
        }
        return {};
    }

    // Finds the place and clicks in one step, since rows move.
    QJsonObject answerIn(QWindow& window, QAccessibleInterface& list, const QStringList& words) {
        if (words.size() > 1) {
            const int row = words[1].toInt();
            bool isThere = false;
            const auto standsStill = [&] {
                QMetaObject::invokeMethod(list.object(),
                                          "standsStill",
                                          Q_RETURN_ARG(bool, isThere),
                                          Q_ARG(qsizetype, row));
                return isThere;
            };
            constexpr int kLimit = 10'000;  // milliseconds
            (void)QTest::qWaitFor(standsStill, kLimit);
            auto* target = firstIn(isThere ? list.child(row) : nullptr, [&words](auto& view) {
                return words.size() == 2 || view.text(QAccessible::Name) == words[2];
            });
            if (target == nullptr) {
                return {{"error", "nothing there"}};
            }
            place_ = window.mapFromGlobal(target->rect().center());
        }
        if (words[0] != "state") {
            const auto action = words[0] == "click"   ? QTest::MouseClick
                                : words[0] == "press" ? QTest::MousePress
                                                      : QTest::MouseRelease;
            QTest::mouseEvent(action, &window, Qt::LeftButton, {}, place_);
        }
        QJsonArray rows;
        for (int row = 0; row < list.childCount(); ++row) {
            rows.append(list.child(row)->text(QAccessible::Name));
        }
        return {{"rows", rows}, {"height", list.rect().height()}};
    }

    QPoint place_;  // of the last press, in the window
};

}  // namespace quillet::test

#include "WindowDriverPlugin.moc"
