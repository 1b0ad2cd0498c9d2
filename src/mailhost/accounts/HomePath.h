#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillet::mailhost {

// The absolute path that "/…", "~" or "~/…" stands for, without "/" at its end; none for other
// texts.
std::optional<std::string> absolutePath(std::string_view text, const std::string& home);

// `path` with "~" in place of the home folder in front. absolutePath() undoes it.
std::string abbreviatedPath(const std::string& path, const std::string& home);

// The path without symbolic links as far as it exists; the path itself if it cannot be followed.
std::string canonicalPath(const std::string& path);

// Whether a path is `folder` or lies below it, as text.
bool isAtOrBelow(std::string_view path, std::string_view folder);

// The part of a path that is at or below `folder`, without "/" in front.
std::string pathBelow(std::string_view path, std::string_view folder);

}  // namespace quillet::mailhost
