#pragma once

/// Records the calls of the platform's functions and injects faults into them.

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace macplatform {

/// Returns the string in quotation marks, and "NULL" for a null pointer. Line breaks, control bytes,
/// quotation marks and backslashes are escaped.
std::string Quoted(const char* text);
std::string Quoted(const std::string& text);
/// Returns the number with the fewest digits that convert back to the same number.
std::string Digits(double number);

/// One call in progress. The destructor passes the recorded call to the observer. Calls that the platform
/// itself makes during the call are not recorded, and no fault is injected into them.
///
///     OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) {
///         PlatformCall call("FSPathMakeRef");
///         if (call.IsRecorded()) call.SetArguments({Quoted(path)});
///         if (auto code = call.ConsumeFault()) return call.Result(static_cast<OSStatus>(*code));
///         ...
///         return call.Result(status);
///     }
class PlatformCall {
public:
    explicit PlatformCall(const char* name);
    PlatformCall(const PlatformCall&) = delete;
    PlatformCall& operator=(const PlatformCall&) = delete;
    ~PlatformCall();

    /// Returns whether an observer receives this call. If not, the caller need not format the arguments.
    bool IsRecorded() const { return isRecorded; }
    void SetArguments(std::vector<std::string> texts) { arguments = std::move(texts); }

    /// Consumes the fault that is injected into this call. Returns the code of the fault, and nothing if
    /// there is no fault.
    std::optional<long> ConsumeFault();

    /// Records why the call failed or had no effect, for a call whose result does not show the reason.
    void SetNote(std::string text) {
        if (isRecorded) note = std::move(text);
    }

    /// Records the result, in the notation of `text` if given, and returns `value`.
    template <typename T>
    T Result(T value) {
        if (isRecorded) result = ToText(value);
        return value;
    }
    template <typename T>
    T Result(T value, const std::string& text) {
        if (isRecorded) result = text;
        return value;
    }

private:
    template <typename T>
    static std::string ToText(T value) {
        if constexpr (std::is_same_v<T, unsigned char>) { // the platform's Boolean
            return value ? "true" : "false";
        } else if constexpr (std::is_pointer_v<T>) {
            return value ? "an object" : "NULL";
        } else {
            return std::to_string(value);
        }
    }

    const char* name;
    bool isRecorded;
    std::vector<std::string> arguments;
    std::string result;
    std::string note;
};

/// Marks a scope in which the platform calls functions for its own purposes: no call is recorded, no fault is
/// injected, and every path is a path of this machine. Every `PlatformCall` has the same effect. Platform
/// code that runs outside a `PlatformCall` creates a `PlatformInside`.
class InternalCallScope {
public:
    InternalCallScope();
    InternalCallScope(const InternalCallScope&) = delete;
    InternalCallScope& operator=(const InternalCallScope&) = delete;
    ~InternalCallScope();
    static bool IsActive();
};

/// Marks a scope in which the platform runs code of a bundle, for instance a factory function or an
/// initialiser. Calls in the scope count as calls of the bundle.
class BundleCodeScope {
public:
    BundleCodeScope();
    BundleCodeScope(const BundleCodeScope&) = delete;
    BundleCodeScope& operator=(const BundleCodeScope&) = delete;
    ~BundleCodeScope();

private:
    int outerDepth;
};

} // namespace macplatform
