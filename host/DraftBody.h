#pragma once

#include <QHash>
#include <QTextBrowser>
#include <QUrl>

#include "host/Draft.h"

namespace quillet::host {

// The body of a stranger's draft. It shows the pictures that came with the draft and loads nothing
// else, neither from the disk nor from the net; links lead nowhere. Main thread only.
class DraftBody final : public QTextBrowser {
public:
    explicit DraftBody(const Draft& draft);

    // As high as the body, within bounds.
    QSize sizeHint() const override;
    QVariant loadResource(int type, const QUrl& name) override;

private:
    void showBody(const QString& html);

    QHash<QUrl, QByteArray> pictures_;  // by the address that the body names
};

}  // namespace quillet::host
