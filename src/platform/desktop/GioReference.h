#pragma once

#include <memory>

// Owns a reference to an object of GIO. For .cpp files only: it stays clear of GIO's own headers,
// which define macros.
// NOLINTNEXTLINE(readability-redundant-declaration): users also include the library's own
extern "C" void g_object_unref(void* object);

namespace quillet::platform {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename Object>
using Reference = std::unique_ptr<Object, Unref>;

}  // namespace quillet::platform
