#pragma once

#include <QHash>
#include <QTextBrowser>
#include <QUrl>
#include <string_view>

#include "host/Draft.h"

namespace quillet::host {

// The body of a stranger's draft. It shows the pictures that came with the draft and loads nothing
// else, neither from the disk nor from the net; links lead nowhere. Main thread only.
class DraftBody final : public QTextBrowser {
public:
    explicit DraftBody(const Draft& draft);

    // Whether the body goes on behind what is shown of it.
    bool isCut() const noexcept { return isCut_; }
    // As high as the body, within bounds.
    QSize sizeHint() const override;
    QVariant loadResource(int type, const QUrl& name) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void showBody(std::string_view body);

    bool isCut_ = false;
    QHash<QUrl, QByteArray> pictures_;  // by the address that the body names
};

}  // namespace quillet::host
