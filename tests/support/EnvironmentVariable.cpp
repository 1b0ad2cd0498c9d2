#include "tests/support/EnvironmentVariable.h"

#include <cstdlib>
#include <utility>

namespace quillet::test {

namespace {

void put(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name.c_str(), value->c_str(), 1);
    } else {
        unsetenv(name.c_str());
    }
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) {
        old_ = old;
    }
    put(name_, value);
}

EnvironmentVariable::~EnvironmentVariable() {
    put(name_, old_);
}

}  // namespace quillet::test
