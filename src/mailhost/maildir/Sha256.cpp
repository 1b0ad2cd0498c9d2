#include "mailhost/maildir/Sha256.h"

#include <glib.h>
#include <memory>

namespace quillet::mailhost {

std::string sha256(std::string_view bytes) {
    const std::unique_ptr<char, void (*)(void*)> digits(
        g_compute_checksum_for_data(
            G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size()),
        g_free);
    return digits.get();
}

}  // namespace quillet::mailhost
