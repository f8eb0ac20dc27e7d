#pragma once

/// @file
/// What the platform is asked to do, in order, and what it is made to refuse.
///
/// While an observer is set, each platform call (those of `CoreFoundation/` except CFSTR, `Carbon/`, `objc/`,
/// `mach/`, `sys/`, and path calls of the C library that fall on the startup volume) is told to it after it
/// is done. Calls that the platform makes of itself on the way are not told.

#include <functional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// One call, after it is done.
struct RecordedCall {
    std::string call; ///< The function's name.
    /// As a person would write them: texts in quotation marks; of objc_msgSend receiver, selector and
    /// argument.
    std::vector<std::string> arguments;
    std::string result; ///< Empty for a call without result.
    std::string note;   ///< Why it failed or had no effect, where the result does not tell.
};

/// Called on the thread that made the call, before that goes on.
using CallObserver = std::function<void(const RecordedCall&)>;

/// Replaces the observer; an empty one ends the telling. The observer must not throw.
void SetCallObserver(CallObserver observer);

/// A failure that is ordered: the call of this name fails once, after `skip` more calls of it, in the way of
/// its kind: null for a function that makes an object, false for one that answers yes or no, -1 for
/// StopAlert, `code` as the result code of the other Carbon calls, and `code` as errno for those of the C
/// library. It then has no other effect. Calls that cannot fail (CFRetain, CFRelease, CFStringGetLength,
/// AEDisposeDesc, the clocks and others) never meet an ordered failure, which then waits.
struct InjectedFault {
    std::string call;  ///< The function's name, as the journal tells it.
    long code = 0;     ///< For calls that answer with a code.
    unsigned skip = 0; ///< Calls that succeed before.
};
/// Adds one to those that are waiting. A name that no call has waits until `CancelInjectedFaults`.
void InjectFault(const InjectedFault& fault);

/// Takes back every fault that has not happened yet; answers how many those were.
std::size_t CancelInjectedFaults();

} // namespace macplatform
#pragma GCC visibility pop
