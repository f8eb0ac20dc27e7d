#pragma once

/// The kinds of path calls. A call is made on the startup volume if a path among its arguments is redirected,
/// and unchanged otherwise. For all kinds, `name` is the name in the call log, and `next` is the function of
/// the C library. The path is the first text among the arguments.

#include "PathCall.h"

#include <macplatform/FileDescriptor.h>

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <utility>
#include <vector>

namespace macplatform {

/// The mode of a call that creates a file only with certain flags. The caller may omit the mode for other
/// flags; the value is arbitrary then.
enum class OptionalMode : unsigned {};

/// The result of a failed call: -1 or a null pointer.
template <typename Result>
inline constexpr Result kFailure = -1;
template <typename Item>
inline constexpr Item* kFailure<Item*> = nullptr;

/// The places of the texts among the parameters of a call.
template <typename... Parameters>
struct TextPlaces {
    static constexpr std::size_t kCount = sizeof...(Parameters);

    /// Returns the place of the first text at or behind `place`. Returns kCount if there is none.
    static constexpr std::size_t From(std::size_t place) {
        constexpr bool isText[] = {std::is_same_v<Parameters, const char*>...};
        while (place < kCount && !isText[place]) ++place;
        return place;
    }
    static constexpr std::size_t First() { return From(0); }
    static constexpr std::size_t Second() { return From(First() + 1); }
    /// Returns whether the argument stands before a text: the descriptor of a directory, or the version of a
    /// structure.
    static constexpr bool IsBeforeText(std::size_t place) {
        return From(place) > place && From(place) < kCount;
    }
};

/// Returns the arguments for the call log, which omits optional modes and what stands before a text.
template <typename... Parameters, std::size_t... places>
std::vector<std::string> ShownArguments(const std::tuple<Parameters...>& arguments,
                                        std::index_sequence<places...>) {
    std::vector<std::string> shown;
    const auto show = [&shown](bool isOmitted, auto argument) {
        if constexpr (!std::is_same_v<decltype(argument), OptionalMode>) {
            if (!isOmitted) shown.push_back(ShownArgument(argument));
        }
    };
    (show(TextPlaces<Parameters...>::IsBeforeText(places), std::get<places>(arguments)), ...);
    return shown;
}

/// Makes a call with one path, which is at `place`. `link` says whether a symbolic link at the end of the
/// path is followed. On the startup volume, `around` makes the call: it gets the path of this machine, and a
/// function that makes the call with that path.
template <std::size_t place, typename Around, typename Result, typename... Parameters>
Result CallWithPath(const char* name, LastLink link, Around around, Result (*next)(Parameters...),
                    const std::tuple<Parameters...>& given) {
    const char* const path = std::get<place>(given);
    if (!IsRedirected(path)) return std::apply(next, given);
    const auto make = [&](const char* hostPath) {
        auto onVolume = given;
        std::get<place>(onVolume) = hostPath;
        return around(hostPath, [&] { return std::apply(next, onVolume); });
    };
    const auto show = [&] { return ShownArguments(given, std::index_sequence_for<Parameters...>()); };
    return CallOnVolume(name, kFailure<Result>, link, path, make, show);
}

/// Makes a call that queries or changes an item.
template <typename Result, typename... Parameters>
Result ItemCall(const char* name, LastLink link, Result (*next)(Parameters...), Parameters... arguments) {
    const auto around = [](const char*, auto make) { return make(); };
    return CallWithPath<TextPlaces<Parameters...>::First()>(name, link, around, next,
                                                            std::tuple(arguments...));
}

/// Makes a call that creates a symbolic link. The first text, its target, is not converted: the target is
/// redirected when a call follows the link.
template <typename... Parameters>
int SymbolicLinkCall(const char* name, int (*next)(Parameters...), Parameters... arguments) {
    const auto around = [](const char*, auto make) { return make(); };
    return CallWithPath<TextPlaces<Parameters...>::Second()>(name, LastLink::kNoFollow, around, next,
                                                             std::tuple(arguments...));
}

/// Keeps a pipe open for writing during the lifetime of the object. If a bundle opens a path for reading and
/// the path is a pipe, the call therefore does not wait for a writer. The bundle then reads an empty file.
class PipeWriter {
public:
    template <typename Mode>
    PipeWriter(const char* hostPath, Mode mode)
        : writer(IsPipe(hostPath) && OpensToRead(mode) ? Open(hostPath) : -1) {}

private:
    static bool OpensToRead(int flags) { return (flags & O_ACCMODE) == O_RDONLY; }
    static bool OpensToRead(const char* mode) { return mode[0] == 'r' && !std::strchr(mode, '+'); }
    static bool IsPipe(const char* hostPath) {
        struct stat status {};
        return stat(hostPath, &status) == 0 && S_ISFIFO(status.st_mode);
    }
    static int Open(const char* hostPath) { return open(hostPath, O_RDWR | O_NONBLOCK | O_CLOEXEC); }

    FileDescriptor writer;
};

/// Makes a call that opens a file. The argument behind the path is its flags or its mode.
template <typename Result, typename... Parameters>
Result OpeningCall(const char* name, LastLink link, Result (*next)(Parameters...), Parameters... arguments) {
    constexpr std::size_t place = TextPlaces<Parameters...>::First();
    const std::tuple given(arguments...);
    const auto around = [&given](const char* hostPath, auto make) {
        const PipeWriter writer(hostPath, std::get<place + 1>(given));
        return make();
    };
    return CallWithPath<place>(name, link, around, next, given);
}

/// Makes a call that walks a directory tree. It passes paths of this machine to the visitor, a function of
/// the bundle. Interposed calls do not change such paths.
template <typename... Parameters>
int WalkingCall(const char* name, int (*next)(Parameters...), Parameters... arguments) {
    const auto around = [](const char*, auto make) {
        const BundleCodeScope visitor;
        return make();
    };
    return CallWithPath<0>(name, LastLink::kFollow, around, next, std::tuple(arguments...));
}

/// Makes a call of realpath and converts the result to a path of the Mac. With a path of this machine, the
/// bundle would leave the startup volume.
template <typename... Parameters>
char* ResolvingCall(char* (*next)(Parameters...), Parameters... arguments) {
    const auto around = [](const char*, auto make) -> char* {
        char* const resolved = make();
        if (!resolved || !LiesInStartupVolume(resolved)) return resolved;
        const std::string onMac = MacPath(resolved); // shorter than `resolved`
        std::memcpy(resolved, onMac.c_str(), onMac.size() + 1);
        return resolved;
    };
    return CallWithPath<0>("realpath", LastLink::kFollow, around, next, std::tuple(arguments...));
}

/// Makes a call with two paths, the first two texts. Each path is redirected separately. `fromLink` says
/// whether a symbolic link at the end of the first path is followed. A link at the end of the second path is
/// not followed.
template <typename... Parameters>
int TwoPathCall(const char* name, LastLink fromLink, int (*next)(Parameters...),
                Parameters... arguments) try {
    const std::tuple given(arguments...);
    const char* const from = std::get<TextPlaces<Parameters...>::First()>(given);
    const char* const to = std::get<TextPlaces<Parameters...>::Second()>(given);
    if (!from || !to || !(IsRedirected(from) || IsRedirected(to))) return next(arguments...);
    const std::string hostFrom = HostPathOf(from, fromLink);
    const int unresolved = *from ? errno : ENOENT;
    const auto make = [&](const char* hostTo) {
        if (hostFrom.empty()) {
            errno = unresolved;
            return -1;
        }
        auto onVolume = given;
        std::get<TextPlaces<Parameters...>::First()>(onVolume) = hostFrom.c_str();
        std::get<TextPlaces<Parameters...>::Second()>(onVolume) = hostTo;
        return std::apply(next, onVolume);
    };
    const auto show = [&] { return ShownArguments(given, std::index_sequence_for<Parameters...>()); };
    return CallOnVolume(name, -1, LastLink::kNoFollow, to, make, show);
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return -1;
}

/// Makes a call that generates the name of a temporary item. `path` ends with six placeholder characters and
/// `suffix` further bytes. After a success, `path` contains the generated characters instead.
template <typename Result, typename... Parameters>
Result TemporaryCall(const char* name, int suffix, Result (*next)(char*, Parameters...), char* path,
                     Parameters... others) {
    if (!IsRedirected(path)) return next(path, others...);
    const auto make = [&](const char* hostPath) -> Result {
        std::string filled = hostPath;
        const Result result = next(filled.data(), others...);
        if (result == kFailure<Result>) return result;
        const std::size_t length = std::strlen(path);
        const std::size_t made = std::min(length, std::size_t{6} + static_cast<unsigned>(suffix));
        std::memcpy(path + length - made, filled.data() + filled.size() - made, made);
        if constexpr (std::is_pointer_v<Result>) return path;
        return result;
    };
    const auto show = [path] { return std::vector{ShownArgument(path)}; };
    return CallOnVolume(name, kFailure<Result>, LastLink::kNoFollow, path, make, show);
}

} // namespace macplatform
