#pragma once

/// What the child that runs the bundle tells its parent, one line of JSON each.

#include <macplatform/Alerts.h>
#include <macplatform/Bundles.h>
#include <macplatform/CallLog.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace xcodhost {

/// The bundle's code is about to run.
struct CallBegan {
    std::string function;
    std::string arguments;
    std::string event; ///< Of the installer, "pre-install"; empty for the other calls.
};

/// What a delivery did to the parameter block.
struct BlockEffect {
    std::uint32_t errorFlagsBefore = 0;
    std::uint32_t errorFlagsAfter = 0;
    std::string otherBytes; ///< "20 to 23" when bytes outside the error flags changed, or empty.
};

struct CallReturned {
    std::string result;               ///< Empty for a call without result.
    std::optional<BlockEffect> block; ///< Given for deliveries.
};

struct ExceptionEscaped {
    std::string type;
    std::string what; ///< Empty when it is no std::exception.
};

/// The bundle gave no instance, or no interface.
struct LoadFailed {
    std::string reason; ///< A stable word: "no-bundle", "symbol-missing", ...
    std::string text;
};

struct ObjectsLeft {
    std::vector<std::string> objects;
};

/// What a check found.
struct Finding {
    std::string expected;
    std::string seen;
};

/// A check cannot be made on this machine.
struct Skipped {
    std::string reason;
};

/// What post-install stored for a product and a language.
struct TableCell {
    std::int32_t product = 0;
    std::int32_t language = 0;
    std::string seen;
    bool isRight = false;
};

/// The child itself could not go on; no fault of the bundle.
struct ChildFault {
    std::string text;
};

/// The last message; an end without it was not the host's doing.
struct Done {};

using Message =
    std::variant<CallBegan, CallReturned, macplatform::RecordedCall, macplatform::Alert, ExceptionEscaped,
                 LoadFailed, ObjectsLeft, Finding, Skipped, TableCell, ChildFault, Done>;

/// One line with its line feed.
std::string Encode(const Message& message);

/// Nothing when the line, without its line feed, is none that `Encode` writes.
std::optional<Message> Decode(std::string_view line);

/// The word that `LoadFailed::reason` has for a fault of the platform.
const char* ReasonWord(macplatform::BundleFault fault);

} // namespace xcodhost
