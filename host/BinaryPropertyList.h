#pragma once

#include <string>

#include "host/PropertyListWriter.h"

namespace quillet::host {

// The binary format, version "00".
std::string writeBinary(const Value& root);

}  // namespace quillet::host
