#include "app/ListCommand.h"

#include <QString>
#include <algorithm>
#include <nlohmann/json.hpp>

#include "app/SingleUpdate.h"
#include "model/ContainerPaths.h"
#include "platform/ui/SingleLineText.h"

namespace quillet {

using Json = nlohmann::ordered_json;
using platform::Number;

namespace {

Json jsonOf(const std::optional<std::string>& text) {
    return text ? Json(*text) : Json(nullptr);
}

Json jsonOf(const std::optional<Number>& number) {
    if (!number) {
        return nullptr;
    }
    switch (number->kind()) {
        case Number::Kind::Boolean:
            return number->boolValue();
        case Number::Kind::Integer:
            return number->integerValue();
        case Number::Kind::Unsigned:
            return number->unsignedIntegerValue();
        case Number::Kind::Real:
            return number->doubleValue();
    }
    return nullptr;
}

Json jsonOf(const ExtensionMessage& message) {
    const std::optional<double> date = message.date();
    return {
        {"messageId", jsonOf(message.messageId())},
        {"account", jsonOf(message.account())},
        {"from", jsonOf(message.from())},
        {"subject", jsonOf(message.subject())},
        {"folderPath", jsonOf(message.folderPath())},
        {"dateString", jsonOf(message.dateString())},
        {"date", date ? Json(*date) : Json(nullptr)},
        {"folderStandardId", jsonOf(message.folderStandardId())},
        {"unread", jsonOf(message.unread())},
        {"idx", message.idx()},
        {"acc_idx", message.acc_idx()},
    };
}

const char* nameOf(NCUpdateResult result) {
    switch (result) {
        case NCUpdateResultNewData:
            return "NCUpdateResultNewData";
        case NCUpdateResultNoData:
            return "NCUpdateResultNoData";
        case NCUpdateResultFailed:
            break;
    }
    return "NCUpdateResultFailed";
}

std::string jsonText(const SingleUpdate& update, NCUpdateResult result) {
    Json messages = Json::array();
    for (const auto& message : *update.controller().dataToShow()) {
        messages.push_back(jsonOf(*message));
    }
    const Json object = {
        {"container", jsonOf(ExtensionUtilities::GroupPath())},
        {"segment", update.segment()},
        {"result", nameOf(result)},
        {"read", update.controller().dataFromDisk()->size()},
        {"messages", std::move(messages)},
    };
    // Bytes of a path that are not UTF-8 become replacement characters.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// The text without characters that could disturb a terminal.
QString lineOf(const std::optional<std::string>& text) {
    return platform::singleLineText(text.value_or(""));
}

// Two lines a row, as in the panel: date and sender, and the subject below.
std::string plainText(const SingleUpdate& update) {
    const auto messages = update.controller().dataToShow();
    qsizetype width = 0;
    for (const auto& message : *messages) {
        width = std::max(width, lineOf(message->dateString()).size());
    }
    const qsizetype indent = width + 2;
    QString text;
    for (const auto& message : *messages) {
        text += lineOf(message->dateString()).leftJustified(indent) + lineOf(message->from()) +
                QLatin1Char('\n') + QString(indent, QLatin1Char(' ')) + lineOf(message->subject()) +
                QLatin1Char('\n');
    }
    return text.isEmpty() ? "No messages\n" : text.toStdString();
}

}  // namespace

std::string listRows(ListFormat format, std::optional<std::int64_t> segment) {
    SingleUpdate update(segment);
    const NCUpdateResult result = update.run();
    return format == ListFormat::Json ? jsonText(update, result) : plainText(update);
}

}  // namespace quillet
