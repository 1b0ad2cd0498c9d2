#pragma once

#include <string>
#include <string_view>

// Operations on paths as text, without the file system. A path is bytes: usually UTF-8, but names
// that are not valid UTF-8 stay unchanged.
namespace quillet::platform::Path {

// The last component without a trailing "/"; "/" for the root, "" for the empty path.
std::string lastPathComponent(std::string_view path);
// `path` and `component` with exactly one "/" between them.
std::string appendingPathComponent(std::string_view path, std::string_view component);
// `path` without a trailing "/" + "." + `extension`.
std::string appendingPathExtension(std::string_view path, std::string_view extension);
// The part after the last "." of the last component, or "" if either side of the "." is empty.
std::string pathExtension(std::string_view path);
// `path` without a trailing "/", and without "." and pathExtension(path).
std::string deletingPathExtension(std::string_view path);

}  // namespace quillet::platform::Path
