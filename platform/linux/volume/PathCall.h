#pragma once

/// Declares how an interposed path call of the C library is redirected, recorded and made to fail.
/// PathCallKinds.h declares the kinds of calls, and PathCalls.cpp defines the calls.

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

/// Restores errno in its destructor. The restored value is the errno at construction, or the value of the
/// last `Save` or `Set`. This is necessary because the recording of a call may change errno.
class SavedErrno {
public:
    SavedErrno() : value(errno) {}
    SavedErrno(const SavedErrno&) = delete;
    SavedErrno& operator=(const SavedErrno&) = delete;
    ~SavedErrno() { errno = value; }
    /// Stores the present errno as the value to restore.
    void Save() { value = errno; }
    void Set(int error) { value = error; }

private:
    int value;
};

/// Returns the definition of a function after the one of the platform: the definition of the C library, or
/// that of a sanitizer, which then calls the C library.
template <typename Function>
Function* NextDefinition(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

/// Returns whether the path of a call must be redirected to the startup volume. Returns false for a null
/// pointer, and in calls that the platform itself makes. Returns true if memory runs out, so that
/// CallOnVolume is called and fails with ENOMEM.
inline bool IsRedirected(const char* path) noexcept try {
    return path && StartupVolumeIsSet() && !InternalCallScope::IsActive() && IsOnStartupVolume(path);
} catch (const std::bad_alloc&) {
    return true;
}

/// Converts the path of a call to a path of this machine. Returns an empty string and sets errno if the path
/// cannot be resolved. Returns an empty string and does not set errno for an empty path. Throws
/// std::bad_alloc.
inline std::string HostPathOf(const char* path, LastLink link) {
    return IsRedirected(path) ? HostPath(path, link) : std::string(path);
}

/// Formats an argument for the call log. A pointer to data is shown as "...".
inline std::string ShownArgument(const char* text) { return Quoted(text); }
inline std::string ShownArgument(const void* pointer) { return pointer ? "..." : "NULL"; }
template <typename T>
std::enable_if_t<std::is_integral_v<T>, std::string> ShownArgument(T number) {
    return std::to_string(number);
}

/// Formats a result for the call log. If `failed` is true, the text includes the description of errno.
template <typename Result>
std::string ShownResult(Result result, bool failed) {
    if (failed) return std::string(std::is_pointer_v<Result> ? "NULL: " : "-1: ") + std::strerror(errno);
    if constexpr (std::is_pointer_v<Result>) {
        return "open";
    } else {
        return std::to_string(result);
    }
}

/// Calls `make` with `hostPath`, and records and returns the result. If `hostPath` is empty, does not call
/// `make` and returns `failure`. Passes errno to `savedErrno` if the call fails.
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

/// Makes a path call on the startup volume. Converts `path` to a path of this machine, records the call with
/// the texts that `show` returns, and calls `make` with the converted path. A pending fault makes the call
/// fail before `make` is called. Returns `failure` and sets errno if the call fails.
template <typename Result, typename Make, typename Show>
Result CallOnVolume(const char* name, Result failure, LastLink link, const char* path, Make make,
                    Show show) try {
    SavedErrno savedErrno;
    const std::string hostPath = HostPathOf(path, link);
    const int unresolved = errno;
    PlatformCall call(name);
    call.Record(show);
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
