#pragma once

#include <string>

#include "host/PropertyListWriter.h"

namespace quillet::host {

// The XML format in UTF-8, one value a line, indented with tabs, without a document type.
std::string writeXml(const Value& root);

}  // namespace quillet::host
