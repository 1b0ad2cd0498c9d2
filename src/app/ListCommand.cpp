#include "app/ListCommand.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "app/SingleUpdate.h"
#include "model/ExtensionUtilities.h"
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
    // A path may hold bytes that are no UTF-8; they are shown as replacement characters.
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// A text that cannot disturb its neighbours on a terminal.
std::string lineOf(const std::optional<std::string>& text) {
    return platform::singleLineText(text.value_or("")).toStdString();
}

// Two lines a row, as the panel shows it: date and sender, below them the subject.
std::string plainText(const SingleUpdate& update) {
    std::size_t width = 0;
    for (const auto& message : *update.controller().dataToShow()) {
        width = std::max(width, message->dateString().value_or("").size());
    }
    const std::size_t indent = width + 2;
    std::string text;
    for (const auto& message : *update.controller().dataToShow()) {
        std::string date = message->dateString().value_or("");
        date.resize(std::max(date.size(), indent), ' ');
        text += date + lineOf(message->from()) + "\n";
        text += std::string(indent, ' ') + lineOf(message->subject()) + "\n";
    }
    return text.empty() ? "No messages\n" : text;
}

}  // namespace

std::string listRows(ListFormat format, std::optional<std::int64_t> segment) {
    SingleUpdate update(segment);
    const NCUpdateResult result = update.run();
    return format == ListFormat::Json ? jsonText(update, result) : plainText(update);
}

}  // namespace quillet
