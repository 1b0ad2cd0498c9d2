#pragma once

#include <cstddef>
#include <string>

#include "bench/store/PropertyListWriter.h"

namespace quillet::bench {

struct StoreSize {
    std::size_t accounts = 10;
    std::size_t filesPerAccount = 50;
    std::size_t messagesPerFile = 400;
    test::PropertyListFormat format = test::PropertyListFormat::Xml;
};

// Writes a container with a message store of this size. Equal arguments write equal stores, except
// for the dates, which lie within the last sixty days. Throws std::runtime_error if a file cannot
// be written.
void makeStore(const std::string& container, const StoreSize& size);

}  // namespace quillet::bench
