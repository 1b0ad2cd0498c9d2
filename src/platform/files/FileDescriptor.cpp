#include "platform/files/FileDescriptor.h"

#include <unistd.h>

namespace quillet::platform {

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

}  // namespace quillet::platform
