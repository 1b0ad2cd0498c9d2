#include "mailhost/maildir/MailLibrary.h"

#include <gmime/gmime.h>

namespace quillet::mailhost {

void startMailLibrary() {
    static const bool isStarted = (g_mime_init(), true);
    static_cast<void>(isStarted);
}

}  // namespace quillet::mailhost
