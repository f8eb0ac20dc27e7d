#include "DarwinCalls.h"

#include "DarwinFiles.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <dlfcn.h>
#include <iterator>
#include <vector>

namespace macplatform {

namespace {

/// The functions of the C library and of the unwinder whose arguments, structures and results are the same on
/// the Mac and on Linux.
constexpr std::string_view kSameCalls[] = {
    "_Unwind_Backtrace",
    "_Unwind_DeleteException",
    "_Unwind_GetCFA",
    "_Unwind_GetGR",
    "_Unwind_GetIP",
    "_Unwind_GetIPInfo",
    "_Unwind_GetLanguageSpecificData",
    "_Unwind_GetRegionStart",
    "_Unwind_RaiseException",
    "_Unwind_Resume",
    "_Unwind_Resume_or_Rethrow",
    "_Unwind_SetGR",
    "_Unwind_SetIP",
    "abort",
    "access",
    "calloc",
    "ceil",
    "ceilf",
    "exp",
    "fabs",
    "fclose",
    "feof",
    "ferror",
    "fflush",
    "fileno",
    "floor",
    "floorf",
    "fmod",
    "fprintf",
    "fputc",
    "fputs",
    "fread",
    "free",
    "frexp",
    "fwrite",
    "getcwd",
    "getenv",
    "gettimeofday",
    "ldexp",
    "localeconv",
    "log",
    "log10",
    "malloc",
    "memchr",
    "memcmp",
    "memcpy",
    "memmove",
    "memset",
    "mkdir",
    "modf",
    "posix_memalign",
    "pow",
    "powf",
    "realloc",
    "remove",
    "rename",
    "rint",
    "rmdir",
    "snprintf",
    "sqrt",
    "strchr",
    "strcmp",
    "strlen",
    "strncmp",
    "strrchr",
    "strstr",
    "strtol",
    "strtoll",
    "strtoul",
    "strtoull",
    "time",
    "unlink",
    "utimes",
    "vfprintf",
    "vsnprintf",
};

/// Extends the small result of a function to `int`. A caller on the Mac reads the whole register, but a
/// function on Linux sets only the bits of its result type.
template <auto function>
struct Widened;
template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct Widened<function> {
    static int Call(Arguments... arguments) { return function(arguments...); }
};
template <auto function>
void* wide() {
    return reinterpret_cast<void*>(&Widened<function>::Call);
}

const std::vector<DarwinCall>& smallResults() {
    static const std::vector<DarwinCall> calls = {
        {"_AECreateAppleEvent", wide<&AECreateAppleEvent>()},
        {"_AECreateDesc", wide<&AECreateDesc>()},
        {"_AEDisposeDesc", wide<&AEDisposeDesc>()},
        {"_AEPutParamDesc", wide<&AEPutParamDesc>()},
        {"_AESend", wide<&AESend>()},
        {"_CFEqual", wide<&CFEqual>()},
        {"_CFNumberGetValue", wide<&CFNumberGetValue>()},
        {"_CFPreferencesSynchronize", wide<&CFPreferencesSynchronize>()},
        {"_CFStringGetCString", wide<&CFStringGetCString>()},
        {"_CFURLGetFSRef", wide<&CFURLGetFSRef>()},
        {"_CreateObjSpecifier", wide<&CreateObjSpecifier>()},
        {"_FSExchangeObjects", wide<&FSExchangeObjects>()},
        {"_FSGetCatalogInfo", wide<&FSGetCatalogInfo>()},
        {"_FSSetCatalogInfo", wide<&FSSetCatalogInfo>()},
        {"_GetProcessInformation", wide<&GetProcessInformation>()},
        {"_MemError", wide<&MemError>()},
        {"_StopAlert", wide<&StopAlert>()},
    };
    return calls;
}

void* findIn(const std::vector<DarwinCall>& calls, const std::string& name) {
    const auto found =
        std::find_if(calls.begin(), calls.end(), [&](const DarwinCall& call) { return call.name == name; });
    return found == calls.end() ? nullptr : found->function;
}

/// Returns a function or variable that this shared library itself defines, or null.
void* findInPlatform(const char* name) {
    void* const symbol = dlsym(RTLD_DEFAULT, name);
    Dl_info found{};
    Dl_info own{};
    const bool isOwn = symbol && dladdr(symbol, &found) != 0 &&
                       dladdr(reinterpret_cast<void*>(&DarwinImport), &own) != 0 &&
                       found.dli_fbase == own.dli_fbase;
    return isOwn ? symbol : nullptr;
}

/// Returns whether the name belongs to a framework. The other names that the platform defines are path calls
/// of the C library, whose structures differ from the Mac's.
bool isFrameworkName(std::string_view name) {
    constexpr std::string_view beginnings[] = {"CF",     "kCF",        "__CF",       "FS",       "AE",
                                               "MP",     "objc_",      "sel_",       "mach_",    "sysctl",
                                               "NewPtr", "DisposePtr", "GetPtrSize", "CreateObj"};
    return std::any_of(std::begin(beginnings), std::end(beginnings), [&](std::string_view beginning) {
        return name.substr(0, beginning.size()) == beginning;
    });
}

} // namespace

std::uint32_t DarwinImport(const std::string& name) {
    const auto address = [](void* symbol) {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(symbol));
    };
    if (void* const call = findIn(DarwinFileCalls(), name)) return address(call);
    if (void* const call = findIn(smallResults(), name)) return address(call);
    if (name.empty() || name[0] != '_') return 0;
    const char* const symbol = name.c_str() + 1;
    if (std::find(std::begin(kSameCalls), std::end(kSameCalls), symbol) != std::end(kSameCalls))
        return address(dlsym(RTLD_DEFAULT, symbol));
    return isFrameworkName(symbol) ? address(findInPlatform(symbol)) : 0;
}

} // namespace macplatform
