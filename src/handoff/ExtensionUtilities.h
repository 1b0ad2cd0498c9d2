#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/ExtensionMessage.h"
#include "platform/extension/ExtensionContext.h"

// Handing what was shared to the host application: files go into a staging folder of the container,
// texts and links into a draft. Any thread; failures are logged and leave out what failed.
//
// A staging folder lies in the data folder and is named after a service word of the caller's
// choice. Every change to it is made under the writer's lock on it. A word that is not one plain
// path component, or that names what the host keeps there ("Today", "Accounts.plist", "Contacts"),
// changes nothing and is logged as an error of the coordination, and so is a missing container.
namespace quillet::ExtensionUtilities {

// Whether a word names a staging folder. To empty what the host keeps beside them would lose mail.
bool namesStagingFolder(std::string_view service);

// Empties the staging folder, or makes it. To be called once before a share.
void ShareInit(std::string_view service);

// Copies files into the staging folder under their own names, with "_1", "_2" … before the
// extension where a name is taken. Symbolic links are followed; folders and everything else that is
// no regular file are errors. The paths of the copies, in the order of `paths`, without those that
// failed; a copy that fails leaves nothing behind.
std::vector<std::string> ShareFiles(std::string_view service,
                                    const std::vector<std::string>& paths);

// Writes blocks of bytes into the staging folder as "image.png", "image_1.png" … in the same way.
std::vector<std::string> ShareDatas(std::string_view service,
                                    const std::vector<std::string_view>& blocks);

// Takes the gathered draft; `error` is always 0.
using ShareCompletion =
    std::function<void(const std::shared_ptr<ExtensionMessage>& message, int error)>;

// Gathers what an extension was given into a draft, on the background queue, and hands it to
// `completion` there: texts and links become its HTML body, a link's title its subject, files and
// images its attachments, as paths in the staging folder. It waits for items that load, up to about
// ten seconds; what comes later is still added to the draft. Of an item that is handed over
// repeatedly the first one counts.
void GetItemForExtension(platform::ExtensionContext context,
                         std::string service,
                         ShareCompletion completion);

}  // namespace quillet::ExtensionUtilities
