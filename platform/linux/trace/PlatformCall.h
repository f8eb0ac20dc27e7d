#pragma once

/// Records platform calls and injects faults into them. macplatform/CallLog.h defines which calls are
/// platform calls.

#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace macplatform {

/// Returns the string in quotation marks. Returns "NULL" for a null pointer. Line breaks, control bytes,
/// quotation marks and backslashes are escaped.
std::string Quoted(const char* text);
std::string Quoted(const std::string& text);
/// Returns the number with the fewest digits that convert back to the same number.
std::string Digits(double number);

/// A platform call in progress. The destructor passes the call to the observer. Nested calls, which the
/// platform itself makes during the call, are not recorded, and no fault is injected into them. The
/// destructor does not change errno.
class PlatformCall {
public:
    /// `name` is the name of the function in the call log. The string must outlive the object.
    explicit PlatformCall(const char* name);
    PlatformCall(const PlatformCall&) = delete;
    PlatformCall& operator=(const PlatformCall&) = delete;
    ~PlatformCall();

    /// Returns whether an observer receives this call. If not, the caller need not format the arguments.
    bool IsRecorded() const { return isRecorded; }
    /// Records the arguments that `show` returns, each in readable notation. Records none if memory runs out.
    template <typename Show>
    void Record(Show show) noexcept try {
        if (isRecorded) arguments = show();
    } catch (const std::bad_alloc&) {
        arguments.clear();
    }

    /// Returns the code of the pending fault for this call and removes the fault. Returns no value if there
    /// is no such fault. A fault that must still skip calls is not returned: this call counts as one of them.
    std::optional<long> ConsumeFault();

    /// Records why the call failed or had no effect, for a call whose result does not show the reason.
    void SetNote(std::string text) {
        if (isRecorded) note = std::move(text);
    }

    /// Records the result and returns `value`. The call log shows `text` instead of the value if there is a
    /// `text`. A recorded result is kept.
    template <typename T>
    T Result(T value) {
        if (isRecorded && result.empty()) result = ToText(value);
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

/// Marks a scope in which the platform calls functions for its own purposes. In this scope no call is
/// recorded, no fault is injected, and no path is redirected to the startup volume. A `PlatformCall` object
/// has the same effect during its lifetime. Platform code that runs outside a `PlatformCall` creates an
/// `InternalCallScope`. A scope affects only its own thread.
class InternalCallScope {
public:
    InternalCallScope();
    InternalCallScope(const InternalCallScope&) = delete;
    InternalCallScope& operator=(const InternalCallScope&) = delete;
    ~InternalCallScope();
    /// Returns whether this thread is in such a scope or in a `PlatformCall`.
    static bool IsActive();
};

/// Marks a scope in which the platform runs code of a bundle, for example a factory function or an
/// initialiser. Calls in this scope are recorded and redirected, even if an outer scope is an
/// `InternalCallScope` or a `PlatformCall`.
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
