#pragma once

#include <optional>
#include <string>

namespace quillet::platform {

// The user's region settings as the environment tells them now.

// The CLDR name of the locale for dates: from LC_ALL, LC_TIME or LANG, the first that is set and
// not empty. "de_DE.UTF-8" gives "de_DE", "sr_RS@latin" gives "sr_Latn_RS"; a modifier of CLDR
// keywords ("@calendar=buddhist") is kept. "C", "POSIX" and none give "en_US_POSIX".
std::string dateLocaleName();

// The time zone that TZ names, as in the zone database; the name of a zone file, given by its path
// (":/etc/localtime", "/usr/share/zoneinfo/Europe/Berlin"), is that of its zone. None where TZ is
// unset, which leaves the zone to the system. Other texts ("JST-9") are returned as they are; see
// PosixTimeZone.
std::optional<std::string> timeZoneName();

}  // namespace quillet::platform
