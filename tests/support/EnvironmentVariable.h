#pragma once

#include <optional>
#include <string>

namespace quillet::test {

// Sets (or with none, unsets) an environment variable and puts the old state back at the end of
// the scope.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string name, const std::optional<std::string>& value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    std::string name_;
    std::optional<std::string> old_;
};

}  // namespace quillet::test
