#pragma once

#include <string>
#include <string_view>

// Operations on paths as text. A path is bytes: UTF-8 as a rule, but names that are no valid UTF-8
// pass unchanged and are compared byte by byte. Nothing here touches the file system.
namespace quillet::platform::Path {

// The last component; a trailing "/" is ignored. "/" for the root, "" for the empty path.
std::string lastPathComponent(std::string_view path);
// `path` and `component` with exactly one "/" between them.
std::string appendingPathComponent(std::string_view path, std::string_view component);
// `path` + "." + `extension`; a trailing "/" of the path is dropped first.
std::string appendingPathExtension(std::string_view path, std::string_view extension);
// The part behind the last "." of the last component, when neither side of it is empty; else "".
std::string pathExtension(std::string_view path);
// `path` without "." and the extension that pathExtension tells, and without a trailing "/".
std::string deletingPathExtension(std::string_view path);

}  // namespace quillet::platform::Path
