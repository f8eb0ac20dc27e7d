#pragma once

/// The command line.

#include "alert/AlertResponder.h"
#include "volume/SampleVolume.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace xcodhost {

struct RunOptions {
    std::string bundle;
    std::optional<std::int32_t> product; ///< Always given unless `blockFile` is.
    std::int32_t language = 0;
    std::uint16_t selector = 1000;
    std::vector<std::uint16_t> messages; ///< One delivery each, in this order.
    std::string blockFile;               ///< Empty: blocks are made from the four values above.
    bool isDirect = false;
    std::string volume; ///< Empty: a scratch sample volume.
    bool isDryRun = false;
    AnswerPolicy answers;
    bool hasTrace = false;
    bool isJson = false;
    double secondsPerCall = 10;
};

struct ShowOptions {
    std::string volume;
    bool isJson = false;
};

struct VolumeOptions {
    std::string folder;
    SampleVolume sample;
    bool isJson = false;
};

struct InfoOptions {
    std::string bundle;
    bool isJson = false;
};

struct ValidateOptions {
    std::vector<std::string> bundles;
    std::vector<std::string> include; ///< Shell patterns of ids; none: all checks.
    std::vector<std::string> exclude;
    std::string junitFile; ///< Empty: none, as for the next.
    std::string htmlFile;
    bool isJson = false;
    double secondsPerCall = 10;
    unsigned atOnce = 0; ///< Checks at the same time; 0: as many as there are processors.
};

struct ListChecksOptions {
    bool isJson = false;
};

struct ExplainOptions {
    std::string check;
    bool isJson = false;
};

/// Text that the command line asked for instead of work: help, or the version.
struct HelpText {
    std::string text;
};

using Command = std::variant<HelpText, RunOptions, ValidateOptions, ShowOptions, VolumeOptions, InfoOptions,
                             ListChecksOptions, ExplainOptions>;

/// Throws UsageError with one line that names the option.
Command ParseCommandLine(int argc, const char* const* argv);

/// Whether "--json" stands anywhere among the arguments, for errors that come before they are understood.
bool WantsJson(int argc, const char* const* argv);

} // namespace xcodhost
