// Prints what the window of an unchanged program shows to a screen reader, and ends the program.

#include <QAccessible>
#include <QCoreApplication>
#include <QGenericPlugin>
#include <QGuiApplication>
#include <QTimer>
#include <QWindow>
#include <iostream>

namespace quillet::test {

void print(QAccessibleInterface& view) {
    std::cout << view.text(QAccessible::Name).toStdString() << '\n';
    if (auto* text = view.textInterface()) {
        std::cout << text->text(0, text->characterCount()).toStdString() << '\n';
    }
    for (int child = 0; child < view.childCount(); ++child) {
        print(*view.child(child));
    }
}

class WindowReaderPlugin final : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "WindowReader.json")

public:
    QObject* create(const QString& /*key*/, const QString& /*options*/) override {
        auto* timer = new QTimer(this);
        timer->callOnTimeout(this, [] {
            for (QWindow* window : QGuiApplication::topLevelWindows()) {
                if (window->isExposed() && window->accessibleRoot() != nullptr) {
                    print(*window->accessibleRoot());
                    std::cout << std::flush;
                    QCoreApplication::quit();
                    return;
                }
            }
        });
        timer->start(1);
        return timer;
    }
};

}  // namespace quillet::test

#include "WindowReaderPlugin.moc"
