#pragma once

/// @file
/// Declares the call log and fault injection: an observer receives each platform call, and an injected fault
/// makes a call fail.
///
/// Platform calls are the functions of `CoreFoundation/` except CFSTR, of `Carbon/`, `objc/`, `mach/` and
/// `sys/`, and the path calls of the C library that are redirected to the startup volume. Calls that the
/// platform itself makes during a platform call are not recorded, and no fault is injected into them. The
/// functions below are not synchronized. They must not be called while another thread makes platform calls.

#include <functional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// One completed call.
struct RecordedCall {
    std::string call; ///< The function's name.
    /// The arguments in readable notation, with strings in quotation marks. The arguments of objc_msgSend are
    /// the receiver, the selector and the argument of the message.
    std::vector<std::string> arguments;
    std::string result; ///< Empty for a function without a result.
    std::string note;   ///< Why the call failed or had no effect; empty if the result shows the reason.
};

/// Receives a completed call, on the thread of the call, before the call returns to its caller.
using CallObserver = std::function<void(const RecordedCall&)>;

/// Replaces the observer. An empty function ends the recording. The observer must not throw.
void SetCallObserver(CallObserver observer);

/// An injected fault. One call of the function `call` fails and has no other effect.
///
/// The result of the failed call depends on the function:
/// - null for a function that creates an object,
/// - false for a function that returns a Boolean,
/// - -1 for StopAlert,
/// - no result for CFPreferencesSetValue, which then sets no value,
/// - `code` for the other functions of Carbon and for mach_timebase_info,
/// - the failure value, with errno set to `code`, for the C library, sysctl and sysctlnametomib.
///
/// Some functions cannot fail, for instance CFRetain, CFRelease, CFStringGetLength, AEDisposeDesc and the
/// clocks. A fault for such a function stays pending.
struct InjectedFault {
    std::string call;  ///< The function's name in the call log.
    long code = 0;     ///< The result code or errno, for functions that return a code.
    unsigned skip = 0; ///< The number of calls that succeed before the fault.
};
/// Adds a fault to the pending faults. A fault with an unknown name stays pending until
/// `CancelInjectedFaults`.
void InjectFault(const InjectedFault& fault);

/// Removes all pending faults and returns their number.
std::size_t CancelInjectedFaults();

} // namespace macplatform
#pragma GCC visibility pop
