#pragma once

/// Declares the messages that the child process, which runs the bundle, sends to its parent. A message is one
/// line of JSON.

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

/// A call of the bundle begins.
struct CallBegan {
    std::string function;
    std::string arguments;
    std::string event; ///< The event that is delivered: "pre-install". Empty for other calls.
};

/// The changes that a delivery made in the parameter block.
struct BlockEffect {
    std::uint32_t errorFlagsBefore = 0;
    std::uint32_t errorFlagsAfter = 0;
    std::string otherBytes; ///< "20 to 23": the changed bytes outside the error flags. Empty: none.
};

/// The call has returned.
struct CallReturned {
    std::string result;               ///< Empty for a call without a result.
    std::optional<BlockEffect> block; ///< Present for deliveries.
};

/// An exception has left the call.
struct ExceptionEscaped {
    std::string type;
    std::string what; ///< Empty if the type is not derived from std::exception.
};

/// The bundle cannot be loaded, or gives no instance or no interface.
struct LoadFailed {
    std::string reason; ///< A constant word for scripts: "no-bundle", "symbol-missing", ...
    std::string text;
};

/// The platform objects that the bundle created and did not release.
struct ObjectsLeft {
    std::vector<std::string> objects;
};

/// A check has found a fault.
struct Finding {
    std::string expected;
    std::string seen;
};

/// A check has done something, or an expectation of it holds. Sent only if the steps are traced.
struct CheckStep {
    std::string kind; ///< "expect", or a word for what was done: "volume", "fault", "call", ...
    std::string text;
};

/// A check cannot be run on this machine.
struct Skipped {
    std::string reason;
};

/// The values that post-install stored for a product and a language.
struct TableCell {
    std::int32_t product = 0;
    std::int32_t language = 0;
    std::string seen;
    bool isRight = false;
};

/// The tool itself has failed in the child process.
struct ChildFault {
    std::string text;
};

/// The last message. If the child ends without this message, the bundle or a limit has ended it.
struct Done {};

using Message =
    std::variant<CallBegan, CallReturned, macplatform::RecordedCall, macplatform::Alert, ExceptionEscaped,
                 LoadFailed, ObjectsLeft, Finding, CheckStep, Skipped, TableCell, ChildFault, Done>;

/// Returns the line of the message with its line feed. Replaces bytes that are not UTF-8 with U+FFFD.
std::string Encode(const Message& message);

/// Returns the message of a line. `line` has no line feed. Returns no value if the line is not a message.
std::optional<Message> Decode(std::string_view line);

/// Returns the word of `LoadFailed::reason` for a fault that the platform has reported.
const char* LoadFailureReason(macplatform::BundleFault fault);

} // namespace xcodhost
