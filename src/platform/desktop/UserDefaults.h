#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace quillet::platform {

// The user's preferences by key. Main thread.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    // The stored integer; 0 when the key is absent or holds none.
    virtual std::int64_t integerForKey(std::string_view key) const = 0;
    virtual void setInteger(std::int64_t value, std::string_view key) = 0;

    // $XDG_CONFIG_HOME/quillet/today.ini; read and written at each call, so that a change made by
    // another program is seen. What is no regular file holds nothing and is never waited for. A
    // file that cannot be written leaves the value for this process alone.
    static UserDefaults& standard();

protected:
    UserDefaults() = default;
    UserDefaults(const UserDefaults&) = default;
    UserDefaults& operator=(const UserDefaults&) = default;
};

// Preferences that live and die with the object, for a run that stores nothing.
class VolatileUserDefaults final : public UserDefaults {
public:
    std::int64_t integerForKey(std::string_view key) const override;
    void setInteger(std::int64_t value, std::string_view key) override;

private:
    std::map<std::string, std::int64_t, std::less<>> values_;
};

}  // namespace quillet::platform
