// quillet-extension SERVICE SUBJECT FILE…
// Copies the files into the staging folder SERVICE of the shared container, and prints the URL that
// hands the host application a draft with them.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "handoff/ExtensionUtilities.h"
#include "handoff/MessageUrl.h"
#include "model/ExtensionMessage.h"

int main(int argc, char** argv) {
    using namespace quillet;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() < 3) {
        std::fputs("Usage: quillet-extension SERVICE SUBJECT FILE…\n", stderr);
        return EXIT_FAILURE;
    }
    const std::string& service = arguments[0];
    const std::vector<std::string> files(arguments.begin() + 2, arguments.end());

    ExtensionUtilities::ShareInit(service);
    const std::vector<std::string> staged = ExtensionUtilities::ShareFiles(service, files);
    if (staged.size() != files.size()) {
        return EXIT_FAILURE;  // the log says which file failed, and why
    }

    const auto draft = ExtensionMessage::init();
    draft->setSubject(arguments[1]);
    draft->setAttachments(ExtensionMessage::Attachments(staged.begin(), staged.end()));
    const auto url = queryUrl(*draft, "compose");
    if (!url) {
        return EXIT_FAILURE;
    }
    std::puts(url->absoluteString().c_str());
    return EXIT_SUCCESS;
}
