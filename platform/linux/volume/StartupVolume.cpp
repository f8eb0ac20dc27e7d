#include <macplatform/StartupVolume.h>

#include "VolumePath.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace macplatform {

namespace {

bool gVolumeIsSet = false;

/// Returns the directory of the startup volume. The string is never destroyed, because path calls occur until
/// the process ends.
std::string& volumeFolder() {
    static auto& gFolder = *new std::string;
    return gFolder;
}

/// Removes and returns the part of `rest` before its first "/".
std::string_view nextComponent(std::string_view& rest) {
    const std::string_view name = rest.substr(0, rest.find('/'));
    rest.remove_prefix(name.size());
    return name;
}

void skipSlashes(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of('/'), rest.size()));
}

/// Returns whether paths that begin with this name are redirected.
bool isVolumeName(std::string_view name) {
    static constexpr std::array<std::string_view, 5> names = {"Library", "Applications", "Users", "System",
                                                              "Volumes"};
    for (const auto& known : names) {
        if (name == known) return true;
    }
    return false;
}

/// Returns the first component that is not ".".
std::string_view firstComponent(std::string_view path) {
    std::string_view name = ".";
    while (name == ".") {
        skipSlashes(path);
        name = nextComponent(path);
    }
    return name;
}

/// Returns the path without each ".", and without each ".." and the name before it. Does not read symbolic
/// links.
std::string lexicallyClean(std::string_view path) {
    std::vector<std::string_view> names;
    const bool asFolder = !path.empty() && path.back() == '/';
    for (skipSlashes(path); !path.empty(); skipSlashes(path)) {
        const auto name = nextComponent(path);
        if (name == "..") {
            if (!names.empty()) names.pop_back();
        } else if (name != ".") {
            names.push_back(name);
        }
    }
    std::string cleaned;
    for (const auto& name : names) (cleaned += '/') += name;
    return asFolder ? cleaned + '/' : cleaned;
}

/// Resolves one path on the startup volume, like a process whose root directory is the volume.
class Walk {
public:
    Walk(std::string path, LastLink lastLink) : rest(std::move(path)), last(lastLink) {}

    /// Returns the path on this machine. Returns an empty string and sets errno if the path cannot be
    /// resolved.
    std::string Run() {
        while (errorNumber == 0 && !rest.empty()) Step();
        if (errorNumber != 0) {
            errno = errorNumber;
            return {};
        }
        return volumeFolder() + reached + (asFolder ? "/" : "");
    }

private:
    void Step() {
        std::string_view view = rest;
        skipSlashes(view);
        const std::string name(nextComponent(view));
        rest.erase(0, rest.size() - view.size());
        asFolder = name.empty() || name == "." || !rest.empty();
        if (name == "..") {
            errorNumber = deadEnd;
            reached.resize(reached.empty() ? 0 : reached.rfind('/'));
        } else if (!name.empty() && name != ".") {
            Descend(name);
        }
    }

    void Descend(const std::string& name) {
        const std::string parent = reached;
        (reached += '/') += name;
        if (deadEnd != 0) return;
        struct stat item {};
        if (lstat((volumeFolder() + reached).c_str(), &item) != 0) {
            (errno == ENOENT ? deadEnd : errorNumber) = errno;
        } else if (S_ISLNK(item.st_mode) && (last == LastLink::kFollow || asFolder)) {
            Follow(parent);
        } else if (!S_ISDIR(item.st_mode)) {
            deadEnd = ENOTDIR;
        }
    }

    void Follow(const std::string& parent) {
        std::array<char, PATH_MAX> target;
        const ssize_t length = readlink((volumeFolder() + reached).c_str(), target.data(), target.size());
        if (length < 0 || ++links > 40) {
            errorNumber = length < 0 ? errno : ELOOP;
            return;
        }
        reached = target[0] == '/' ? "" : parent;
        rest.insert(0, target.data(), static_cast<std::size_t>(length));
        if (rest.size() >= PATH_MAX) errorNumber = ENAMETOOLONG;
    }

    std::string rest;    ///< The part of the path that is not resolved yet.
    std::string reached; ///< The resolved part, relative to the volume: empty or "/a/b".
    LastLink last;
    bool asFolder = false; ///< The path requires that `reached` is a directory.
    int links = 0;
    /// The errno of a further "..": ENOENT if `reached` is missing, ENOTDIR if it is not a directory, else 0.
    int deadEnd = 0;
    int errorNumber = 0;
};

} // namespace

bool StartupVolumeIsSet() { return gVolumeIsSet; }

bool LiesInStartupVolume(std::string_view path) {
    const std::string& folder = volumeFolder();
    return gVolumeIsSet && path.substr(0, folder.size()) == folder &&
           (path.size() == folder.size() || path[folder.size()] == '/');
}

bool IsOnStartupVolume(std::string_view path) {
    if (!gVolumeIsSet || path.empty() || path.front() != '/' || LiesInStartupVolume(path)) return false;
    return isVolumeName(firstComponent(path)) ||
           (path.find("/..") != path.npos && isVolumeName(firstComponent(lexicallyClean(path))));
}

bool SetStartupVolume(const std::string& folder) {
    const InternalCallScope internalCalls;
    if (folder.empty()) {
        gVolumeIsSet = false;
        volumeFolder().clear();
        return true;
    }
    const std::unique_ptr<char, decltype(&std::free)> absolute(realpath(folder.c_str(), nullptr), &std::free);
    struct stat item {};
    if (!absolute || stat(absolute.get(), &item) != 0) return false;
    if (!S_ISDIR(item.st_mode)) {
        errno = ENOTDIR;
        return false;
    }
    volumeFolder() = absolute.get();
    // If the directory is "/", every path of the Mac is the same path on this machine. No volume is set then.
    if (volumeFolder() == "/") volumeFolder().clear();
    gVolumeIsSet = !volumeFolder().empty();
    return true;
}

const std::string& StartupVolume() { return volumeFolder(); }

std::string HostPath(const std::string& macPath, LastLink lastLink) {
    const InternalCallScope internalCalls;
    if (macPath.size() >= PATH_MAX || macPath.find('\0') != macPath.npos) {
        errno = macPath.size() >= PATH_MAX ? ENAMETOOLONG : EINVAL;
        return {};
    }
    if (!IsOnStartupVolume(macPath)) return macPath;
    // A path such as "/tmp/../Library" begins with names of this machine. These names need not exist on the
    // volume.
    const bool startsOnVolume = isVolumeName(firstComponent(macPath));
    return Walk(startsOnVolume ? macPath : lexicallyClean(macPath), lastLink).Run();
}

std::string MacPath(const std::string& hostPath) {
    if (!LiesInStartupVolume(hostPath)) return hostPath;
    const std::string path = hostPath.substr(volumeFolder().size());
    return path.empty() ? "/" : path;
}

} // namespace macplatform
