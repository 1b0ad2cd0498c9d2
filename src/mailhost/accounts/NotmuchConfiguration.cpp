#include "mailhost/accounts/NotmuchConfiguration.h"

#include <glib.h>
#include <memory>

#include "mailhost/accounts/HomePath.h"

namespace quillet::mailhost {

namespace {

std::string valueOf(GKeyFile* file, const char* group, const char* key) {
    const std::unique_ptr<char, void (*)(void*)> value(
        g_key_file_get_string(file, group, key, nullptr), g_free);
    return value ? value.get() : "";
}

}  // namespace

NotmuchConfiguration readNotmuchConfiguration(std::string_view text, const std::string& home) {
    const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file(g_key_file_new(), g_key_file_free);
    NotmuchConfiguration configuration;
    if (text.empty() || g_key_file_load_from_data(
                            file.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr) == 0) {
        return configuration;
    }
    std::string root = valueOf(file.get(), "database", "mail_root");
    if (root.empty()) {
        root = valueOf(file.get(), "database", "path");
    }
    if (!root.empty()) {
        configuration.mailRoot =
            absolutePath(root, home).value_or(*absolutePath("~/" + root, home));
    }
    configuration.name = valueOf(file.get(), "user", "name");
    configuration.address = valueOf(file.get(), "user", "primary_email");
    return configuration;
}

}  // namespace quillet::mailhost
