#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Sets an environment variable, or removes it if the value is null. The destructor restores it.
class Variable {
public:
    Variable(const char* variable, const char* value) : name(variable) {
        if (const char* const earlier = std::getenv(name)) before = earlier;
        Set(value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { Set(before ? before->c_str() : nullptr); }

private:
    void Set(const char* value) const { value ? setenv(name, value, 1) : unsetenv(name); }

    const char* name;
    std::optional<std::string> before;
};
