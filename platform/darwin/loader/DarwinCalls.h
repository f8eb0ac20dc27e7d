#pragma once

/// What the Mac's code may call: names as its files have them, and where they lead to in this process.

#include <cstdint>
#include <string>
#include <string_view>

namespace macplatform {

/// 0 when there is no such thing here.
std::uint32_t DarwinImport(const std::string& name);

/// One call under its Mac name.
struct DarwinCall {
    std::string_view name;
    void* function;
};

} // namespace macplatform
