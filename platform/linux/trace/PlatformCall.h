#pragma once

/// The journal seen from the platform's functions.

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace macplatform {

/// A text in quotation marks, with line breaks, control bytes and quotation marks escaped; "NULL" for null.
std::string Quoted(const char* text);
std::string Quoted(const std::string& text);
/// By the fewest digits that give the same number back.
std::string Digits(double number);

/// One call in progress; when it ends, the observer is told. Calls that the platform makes inside it are not
/// told and meet no ordered fault.
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

    /// Whether describing this call is worth the work.
    bool IsRecorded() const { return isRecorded; }
    void SetArguments(std::vector<std::string> texts) { arguments = std::move(texts); }

    /// The code of a fault that was ordered for this call, which it uses up.
    std::optional<long> ConsumeFault();

    /// Says why a call had no effect or failed, where its result does not tell.
    void SetNote(std::string text) {
        if (isRecorded) note = std::move(text);
    }

    /// Notes the result and hands it on.
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

/// While one lives, the platform works for itself: nothing is told, no fault happens, and paths are this
/// machine's. Every `PlatformCall` is one; platform code that runs outside such a call opens its own.
class InternalCallScope {
public:
    InternalCallScope();
    InternalCallScope(const InternalCallScope&) = delete;
    InternalCallScope& operator=(const InternalCallScope&) = delete;
    ~InternalCallScope();
    static bool IsActive();
};

/// While one lives, code of a bundle runs on behalf of the platform (a factory function, an initialiser): its
/// calls count as a bundle's own again.
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
