#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "message/ParsedMessage.h"

class QListWidget;

namespace quillet::message {

// The attachments by name and size, and the button that saves the chosen one. A double click and
// the Enter key save too. Main thread only.
class AttachmentView final : public QWidget {
public:
    // `attachments` have to outlive it and are not empty.
    AttachmentView(const std::vector<Attachment>& attachments,
                   std::function<void(const Attachment&)> save);

private:
    void saveChosen() const;

    const std::vector<Attachment>& attachments_;
    std::function<void(const Attachment&)> save_;
    QListWidget* list_;  // owned by this
};

}  // namespace quillet::message
