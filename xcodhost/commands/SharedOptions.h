#pragma once

/// Declares the options that several commands have. Each function adds an option to the parser of a command.
/// A value that an option rejects throws UsageError, which names the option.

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace CLI {
class App;
}

namespace xcodhost {

/// Adds an option whose value is a whole number in the range: decimal, or hexadecimal after "0x".
void AddInteger(CLI::App& parser, const std::string& name, std::int64_t lowest, std::int64_t highest,
                const std::function<void(std::int64_t)>& accept, const std::string& description);

/// Adds an option whose value is a number of the type `Integer` that is not below `lowest`.
template <typename Integer, Integer lowest = std::numeric_limits<Integer>::min(), typename Target>
void AddInteger(CLI::App& parser, const std::string& name, Target& target, const std::string& description) {
    AddInteger(
        parser, name, lowest, std::numeric_limits<Integer>::max(),
        [&target](std::int64_t value) { target = static_cast<Integer>(value); }, description);
}

/// Adds `--timeout`, the time limit of one call. `remark` is the end of its description.
void AddTimeout(CLI::App& parser, double& seconds, const std::string& remark = {});

/// Adds `--json`.
void AddJson(CLI::App& parser, bool& isJson);

/// Adds `--mac`, which selects the executable for the Mac. The selection is a state of the platform, which
/// the child processes inherit.
void AddMac(CLI::App& parser);

} // namespace xcodhost
