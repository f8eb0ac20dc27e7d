#pragma once

/// Redirects interposed path calls of the C library to the startup volume. PathCalls.cpp defines the calls.

#include "VolumePath.h"
#include "trace/PlatformCall.h"

#include <macplatform/StartupVolume.h>

#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <new>
#include <string>
#include <type_traits>

namespace macplatform {

/// Sets errno in its destructor: to the value at construction, or to the value of the last `Take` or `Set`.
/// Recording a call may change errno in between.
class SavedErrno {
public:
    SavedErrno() : value(errno) {}
    SavedErrno(const SavedErrno&) = delete;
    SavedErrno& operator=(const SavedErrno&) = delete;
    ~SavedErrno() { errno = value; }
    /// Keeps the present errno.
    void Save() { value = errno; }
    void Set(int error) { value = error; }

private:
    int value;
};

/// Returns the next definition of a function: the definition of the C library, or of a sanitizer that calls
/// the C library.
template <typename Function>
Function* NextDefinition(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

/// Returns whether the path of a call must be redirected to the startup volume. Paths that the platform
/// itself uses are never redirected. Returns true for lack of memory: CallOnVolume then fails with ENOMEM.
inline bool IsRedirected(const char* path) noexcept try {
    return path && StartupVolumeIsSet() && !InternalCallScope::IsActive() && IsOnStartupVolume(path);
} catch (const std::bad_alloc&) {
    return true;
}

/// Converts the path of a call to a path of this machine. Returns an empty string and sets errno if the path
/// cannot be resolved. Throws std::bad_alloc.
inline std::string HostPathOf(const char* path, LastLink link) {
    return IsRedirected(path) ? HostPath(path, link) : std::string(path);
}

/// Formats an argument for the call log.
inline std::string ShownArgument(const char* text) { return Quoted(text); }
inline std::string ShownArgument(const void* pointer) { return pointer ? "..." : "NULL"; }
template <typename T>
std::enable_if_t<std::is_integral_v<T>, std::string> ShownArgument(T number) {
    return std::to_string(number);
}

/// Formats a result for the call log. A failure includes the description of errno.
template <typename Result>
std::string ShownResult(Result result, bool failed) {
    if (failed) return std::string(std::is_pointer_v<Result> ? "NULL: " : "-1: ") + std::strerror(errno);
    if constexpr (std::is_pointer_v<Result>) {
        return "open";
    } else {
        return std::to_string(result);
    }
}

/// Calls `make` with the path of this machine and records the result. Fails with the present errno if
/// `hostPath` is empty.
template <typename Result, typename Make>
Result MakeCall(PlatformCall& call, SavedErrno& savedErrno, Result failure, const std::string& hostPath,
                Make make) {
    if (hostPath.empty()) {
        savedErrno.Save();
        return call.Result(failure, ShownResult(failure, true));
    }
    const Result result = make(hostPath.c_str());
    if (result == failure) savedErrno.Save();
    return call.Result(result, ShownResult(result, result == failure));
}

/// Makes a path call on the startup volume: records the call, injects a pending fault, and calls `make` with
/// the path of this machine. Returns `failure` and sets errno if the call fails.
template <typename Result, typename Make, typename... Arguments>
Result CallOnVolume(const char* name, Result failure, LastLink link, const char* path, Make make,
                    const Arguments&... arguments) try {
    SavedErrno savedErrno;
    const std::string hostPath = HostPathOf(path, link);
    const int unresolved = errno;
    PlatformCall call(name);
    if (call.IsRecorded()) call.SetArguments({ShownArgument(arguments)...});
    if (const auto fault = call.ConsumeFault()) {
        savedErrno.Set(static_cast<int>(*fault));
        errno = static_cast<int>(*fault);
        return call.Result(failure, ShownResult(failure, true));
    }
    if (hostPath.empty()) errno = *path ? unresolved : ENOENT;
    return MakeCall(call, savedErrno, failure, hostPath, make);
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return failure;
}

} // namespace macplatform
