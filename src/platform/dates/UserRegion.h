#pragma once

#include <string>

namespace quillet::platform {

// The CLDR name of the user's locale for dates, as the environment tells it now: from LC_ALL,
// LC_TIME or LANG, the first that is set and not empty. "de_DE.UTF-8" gives "de_DE", "sr_RS@latin"
// gives "sr_Latn_RS"; a modifier of CLDR keywords ("@calendar=buddhist") is kept. "C", "POSIX" and
// none give "en_US_POSIX".
std::string dateLocaleName();

}  // namespace quillet::platform
