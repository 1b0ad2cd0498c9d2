#include "app/SnapshotCommand.h"

#include <QBuffer>
#include <QImage>
#include <QLayout>
#include <QPainter>
#include <QWidget>

#include "app/SingleUpdate.h"
#include "platform/files/FileManager.h"
#include "platform/presentation/AnimationContext.h"
#include "views/Theme.h"

namespace quillet {

namespace {

QImage pictureOf(QWidget& view, platform::Look look) {
    view.ensurePolished();
    view.resize(view.sizeHint());
    view.layout()->activate();
    const qreal ratio = view.devicePixelRatioF();
    QImage picture((QSizeF(view.size()) * ratio).toSize(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Theme::of(look == platform::Look::Dark).panelBackground);
    QPainter painter(&picture);
    view.render(&painter, {}, {}, QWidget::DrawChildren);
    return picture;
}

}  // namespace

std::optional<std::string> drawSnapshot(const Snapshot& snapshot) {
    platform::AnimationContext::setEnabled(false);
    SingleUpdate update(snapshot.segment);
    TodayViewController& controller = update.controller();
    controller.setDarkAppearance(snapshot.look == platform::Look::Dark);
    QWidget* view = controller.view();
    update.run();
    QByteArray png;
    QBuffer buffer(&png);
    if (!pictureOf(*view, snapshot.look).save(&buffer, "png")) {
        return "cannot encode the picture";
    }
    const auto error = platform::FileManager::writeFile(
        snapshot.file, {png.constData(), static_cast<std::size_t>(png.size())});
    return error ? std::optional(error->description()) : std::nullopt;
}

}  // namespace quillet
