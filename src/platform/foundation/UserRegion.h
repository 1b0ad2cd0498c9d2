#pragma once

#include <string>

namespace quillet::platform {

// The user's region settings as the environment tells them now.

// The CLDR name of the locale for dates: from LC_ALL, LC_TIME or LANG, the first that is set and
// not empty. "de_DE.UTF-8" gives "de_DE", "sr_RS@latin" gives "sr_Latn_RS"; a modifier of CLDR
// keywords ("@calendar=buddhist") is kept. "C", "POSIX" and none give "en_US_POSIX".
std::string dateLocaleName();

// The name of the time zone that TZ means where TZ is the path of a zone file
// (":/etc/localtime", "/usr/share/zoneinfo/Europe/Berlin"); "" in every other case.
std::string timeZoneNameOfPath();

}  // namespace quillet::platform
