#pragma once

#include <gmime/gmime.h>
#include <memory>
#include <string>

// What owns the library's objects.
namespace quillet::message {

struct GMimeRelease {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
struct GMimeFree {
    void operator()(char* text) const noexcept { g_free(text); }
};

using GMimeText = std::unique_ptr<char, GMimeFree>;

template <typename Object>
std::unique_ptr<Object, GMimeRelease> owned(Object* object) {
    return std::unique_ptr<Object, GMimeRelease>(object);
}

// Before any other call of the library.
void startGMime();

}  // namespace quillet::message
