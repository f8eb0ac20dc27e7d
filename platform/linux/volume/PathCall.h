#pragma once

/// The C library's path calls, caught on their way: see PathCalls.cpp for the calls themselves.

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

/// Keeps errno as the C library left it, whatever the telling of the journal does to it.
class SavedErrno {
public:
    SavedErrno() : value(errno) {}
    SavedErrno(const SavedErrno&) = delete;
    SavedErrno& operator=(const SavedErrno&) = delete;
    ~SavedErrno() { errno = value; }
    void Save() { value = errno; }
    void Set(int error) { value = error; }

private:
    int value;
};

/// The next definition of a function: the C library's, or that of a sanitizer that leads there.
template <typename Function>
Function* NextDefinition(const char* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

/// Whether a bundle's path falls on the startup volume. Paths that the platform itself uses never do. Without
/// the memory to tell, it does: CallOnVolume then refuses.
inline bool IsRedirected(const char* path) noexcept try {
    return path && StartupVolumeIsSet() && !InternalCallScope::IsActive() && IsOnStartupVolume(path);
} catch (const std::bad_alloc&) {
    return true;
}

/// Where a bundle's path lies on this machine; empty with errno when it cannot be resolved.
inline std::string HostPathOf(const char* path, LastLink link) {
    return IsRedirected(path) ? HostPath(path, link) : std::string(path);
}

inline std::string ShownArgument(const char* text) { return Quoted(text); }
inline std::string ShownArgument(const void* pointer) { return pointer ? "..." : "NULL"; }
template <typename T>
std::enable_if_t<std::is_integral_v<T>, std::string> ShownArgument(T number) {
    return std::to_string(number);
}

template <typename Result>
std::string ShownResult(Result result, bool failed) {
    if (failed) return std::string(std::is_pointer_v<Result> ? "NULL: " : "-1: ") + std::strerror(errno);
    if constexpr (std::is_pointer_v<Result>) {
        return "open";
    } else {
        return std::to_string(result);
    }
}

/// The call itself, made by the platform with the path of this machine.
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

/// A path call that falls on the volume: told to the journal, and made to fail where that was ordered.
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
