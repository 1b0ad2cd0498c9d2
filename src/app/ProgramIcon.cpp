#include "app/ProgramIcon.h"

#include "platform/extension/Bundle.h"

namespace quillet {

QIcon programIcon() {
    const auto shipped = platform::Bundle::main().pathForResource(
        "../icons/hicolor/256x256/apps/it.tarno.quillet.today.png");
    const QIcon fallback = shipped ? QIcon(QString::fromStdString(*shipped)) : QIcon();
    return QIcon::fromTheme(QStringLiteral("it.tarno.quillet.today"), fallback);
}

}  // namespace quillet
