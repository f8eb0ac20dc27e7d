#pragma once

/// Declares the options of each command, and the parser of the command line.

#include "run/BundleRun.h"
#include "volume/SampleVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace xcodhost {

/// The options of `run`.
struct RunOptions {
    RunPlan plan;                        ///< Without the parameter blocks.
    std::optional<std::int32_t> product; ///< Present if `blockFile` is empty.
    std::int32_t language = 0;
    std::uint16_t selector = 1000;
    std::vector<std::uint16_t> messages; ///< One delivery for each message, in this order.
    std::string blockFile;               ///< Empty: the four values above fill the parameter blocks.
    bool isJson = false;
};

/// The options of `show`.
struct ShowOptions {
    std::string volume;
    bool isJson = false;
};

/// The options of `volume`.
struct VolumeOptions {
    std::string folder;
    SampleVolume sample;
    bool isJson = false;
};

/// The options of `info`.
struct InfoOptions {
    std::string bundle;
    bool isJson = false;
};

/// The options of `validate`.
struct ValidateOptions {
    std::vector<std::string> bundles;
    std::vector<std::string> include; ///< Ids, groups or shell patterns. Empty: all checks.
    std::vector<std::string> exclude;
    std::string junitFile; ///< Empty: no file.
    std::string htmlFile;  ///< Empty: no file.
    bool hasTrace = false;
    bool isJson = false;
    double secondsPerCall = 10;
    unsigned atOnce = 0; ///< The number of checks that run at the same time. 0: one for each processor.
};

/// The options of `list checks`.
struct ListChecksOptions {
    bool isJson = false;
};

/// The options of `explain`.
struct ExplainOptions {
    std::string check; ///< An id.
    bool isJson = false;
};

/// The text of `--help` or `--version`.
struct HelpText {
    std::string text;
};

using Command = std::variant<HelpText, RunOptions, ValidateOptions, ShowOptions, VolumeOptions, InfoOptions,
                             ListChecksOptions, ExplainOptions>;

/// Parses and checks the command line. Throws UsageError with one line that names the faulty option.
Command ParseCommandLine(int argc, const char* const* argv);

/// Returns whether an argument is "--json". An error in the command line is then printed as JSON.
bool WantsJson(int argc, const char* const* argv);

} // namespace xcodhost
