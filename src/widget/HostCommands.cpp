#include "widget/HostCommands.h"

#include <algorithm>
#include <array>

#include "model/HostInterface.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/TextFormat.h"
#include "platform/desktop/Workspace.h"
#include "platform/extension/Bundle.h"
#include "util/RequestUtils.h"

namespace quillet::ExtensionUtilities {

namespace {

constexpr std::string_view kDefaultTarget = "it.tarno.quillet";
// These lines have hosts of their own, which serve every widget whose identifier begins with
// theirs. Other beta lines do not, although all beta lines share one data folder.
constexpr std::array<std::string_view, 4> kTargets = {
    "it.tarno.quillet.beta8",
    "it.tarno.quillet.beta10",
    "it.tarno.quillet.beta11",
    "it.tarno.quillet2",
};

// The messageId goes into the URL as it is, unlike the account: hosts compare it in this form.
std::optional<platform::URL> commandUrl(const ExtensionMessage& message,
                                        std::string_view commandName) {
    const auto account = message.account();
    const auto folder = message.folderStandardId();
    return platform::URL::URLWithString(platform::formatText(
        "%@://%@?mail=%@&messageid=%@&folderstandardid=%@",
        {kHostScheme,
         commandName,
         account ? RequestUtils::URLEncodedString(*account) : std::string(platform::kAbsentText),
         message.messageId().value_or(std::string(platform::kAbsentText)),
         folder ? folder->text() : std::string(platform::kAbsentText)}));
}

}  // namespace

std::string_view targetBundleIdentifier(const std::optional<std::string>& ownIdentifier) {
    const auto* const target = std::ranges::find_if(kTargets, [&](std::string_view prefix) {
        return ownIdentifier && ownIdentifier->starts_with(prefix);
    });
    return target == kTargets.end() ? kDefaultTarget : *target;
}

bool LaunchCommandForMessages(const std::vector<std::shared_ptr<ExtensionMessage>>& messages,
                              std::string_view commandName,
                              bool background) {
    std::vector<platform::URL> commands;
    for (const auto& message : messages) {
        if (auto command = message ? commandUrl(*message, commandName) : std::nullopt) {
            platform::NotificationCenter::defaultCenter().postNotification(
                kActionCalledNotification, CalledAction{message, std::string(commandName)});
            commands.push_back(*std::move(command));
        }
    }
    return LaunchCommands(commands, background);
}

bool LaunchCommands(std::span<const platform::URL> commands, bool background) {
    if (commands.empty()) {
        return false;
    }
    return platform::Workspace::sharedWorkspace().openURLs(
        commands,
        targetBundleIdentifier(platform::Bundle::main().identifier()),
        background ? platform::LaunchOptions::WithoutActivation
                   : platform::LaunchOptions::AllowingClassicStartup);
}

}  // namespace quillet::ExtensionUtilities
