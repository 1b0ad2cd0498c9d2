#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace quillet::platform {

// The user's preferences by key. Main thread only.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    // The stored integer; 0 if the key is absent or does not hold an integer.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;
    virtual void setInteger(std::int64_t value, std::string_view key) = 0;

    // The file $XDG_CONFIG_HOME/quillet/today.ini, which each call reads or writes, so that changes
    // by other programs are seen. Anything but a regular file counts as empty. If the file cannot
    // be written, the value is kept for this process only.
    static UserDefaults& standard();
};

// Preferences that end with the object, for a run that stores nothing.
class VolatileUserDefaults final : public UserDefaults {
public:
    std::int64_t integerForKey(std::string_view key) const override;
    void setInteger(std::int64_t value, std::string_view key) override;

private:
    std::map<std::string, std::int64_t, std::less<>> values_;
};

}  // namespace quillet::platform
