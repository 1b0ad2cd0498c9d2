#include "message/AttachmentView.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <algorithm>
#include <utility>

#include "message/Texts.h"

namespace quillet::message {

namespace {

constexpr int kMostLines = 4;

QString lineOf(const Attachment& attachment) {
    const QString size =
        QLocale().formattedDataSize(static_cast<qint64>(attachment.content.size()), 1);
    return isolated(QString::fromStdString(attachment.name)) + QStringLiteral(" (") + size +
           QLatin1Char(')');
}

}  // namespace

AttachmentView::AttachmentView(const std::vector<Attachment>& attachments,
                               std::function<void(const Attachment&)> save)
    : attachments_(attachments), save_(std::move(save)), list_(new QListWidget) {
    list_->setAccessibleName(localized("Attachments"));
    list_->setTextElideMode(Qt::ElideMiddle);
    list_->setUniformItemSizes(true);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (const Attachment& attachment : attachments_) {
        list_->addItem(lineOf(attachment));
    }
    list_->setCurrentRow(0);
    const int lines = std::min(list_->count(), kMostLines);
    list_->setFixedHeight(lines * list_->sizeHintForRow(0) + 2 * list_->frameWidth());
    auto* button = new QPushButton(localized("Save as…"));
    auto* row = new QHBoxLayout(this);
    row->addWidget(list_, 1);
    row->addWidget(button, 0, Qt::AlignTop);
    row->setContentsMargins({});
    QObject::connect(button, &QPushButton::clicked, this, [this] { saveChosen(); });
    QObject::connect(list_, &QListWidget::itemActivated, this, [this] { saveChosen(); });
}

void AttachmentView::saveChosen() const {
    if (list_->currentRow() >= 0) {
        save_(attachments_[static_cast<std::size_t>(list_->currentRow())]);
    }
}

}  // namespace quillet::message
