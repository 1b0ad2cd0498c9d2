#pragma once

#include <string>

#include "bench/store/PropertyListWriter.h"

namespace quillet::test {

// The XML format in UTF-8, one value a line, indented with tabs, without a document type.
std::string writeXml(const Value& root);

}  // namespace quillet::test
