#pragma once

#include <QScrollArea>
#include <vector>

#include "message/ParsedMessage.h"

class QFormLayout;

namespace quillet::message {

// The header of a message: a line for each field that it has. What is high scrolls. Main thread
// only.
class HeaderView final : public QScrollArea {
public:
    explicit HeaderView(const ParsedMessage& message);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

private:
    void addAddresses(const char* name, const std::vector<std::string>& entries);
    void addLine(const char* name, const QString& text);

    QFormLayout* lines_;  // owned by what scrolls
};

}  // namespace quillet::message
