#include "VolumeState.h"

#include "DisplayText.h"
#include "ExitStatus.h"

#include <macplatform/FinderFlags.h>
#include <macplatform/StartupVolume.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>
#include <utility>

namespace xcodhost {

namespace {

constexpr std::string_view kPropertyListExtension = ".plist";

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

/// Returns the names in the directory without "." and "..". Sets errno to the error, or to 0.
std::vector<std::string> namesIn(const std::string& path) {
    std::vector<std::string> names;
    const OpenFolder folder(opendir(path.c_str()));
    if (!folder) return names;
    errno = 0;
    while (const dirent* entry = readdir(folder.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
        errno = 0;
    }
    return names;
}

VolumeItem itemFrom(const struct stat& status) {
    VolumeItem item;
    item.mode = status.st_mode;
    item.device = status.st_dev;
    item.inode = status.st_ino;
    item.size = status.st_size;
    item.modified = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
    return item;
}

std::string readLinkTarget(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

/// Records every item of a volume. Uses no recursion, because a plug-in can nest directories so deeply that
/// the stack overflows.
class Walk {
public:
    Walk(std::string volumeFolder, VolumeState& volumeState)
        : volume(std::move(volumeFolder)), state(volumeState) {}

    void Run() {
        std::vector<std::string> folders{""};
        while (!folders.empty()) {
            const std::string folder = std::move(folders.back());
            folders.pop_back();
            errno = 0;
            const std::vector<std::string> names = namesIn(folder.empty() ? volume : volume + folder);
            if (errno != 0) Refused(folder.empty() ? "/" : folder);
            for (const std::string& name : names) {
                std::string item = folder;
                (item += '/') += name;
                if (Visit(item)) folders.push_back(std::move(item));
            }
        }
    }

private:
    /// Records one item. Returns whether the item is a directory.
    bool Visit(const std::string& macPath) {
        const std::string path = volume + macPath;
        struct stat status {};
        if (lstat(path.c_str(), &status) < 0) {
            Refused(macPath);
            return false;
        }
        VolumeItem item = itemFrom(status);
        if (S_ISLNK(status.st_mode)) item.linkTarget = readLinkTarget(path);
        if (const auto flags = macplatform::ReadFinderFlags(path)) {
            item.finderFlags = *flags;
        } else {
            state.problems.push_back(Printable(macPath) + ": the Finder information cannot be read");
        }
        const bool isFolder = S_ISDIR(status.st_mode);
        state.items.emplace(macPath, std::move(item));
        return isFolder;
    }

    void Refused(const std::string& macPath) {
        const int number = errno;
        state.problems.push_back(Printable(macPath) + ": cannot be read: " + std::strerror(number));
    }

    std::string volume;
    VolumeState& state;
};

/// Sets the startup volume. The destructor removes the setting.
class OnVolume {
public:
    explicit OnVolume(const std::string& volume) {
        if (!macplatform::SetStartupVolume(volume)) throw ToolFault::FromErrno(volume);
    }
    OnVolume(const OnVolume&) = delete;
    OnVolume& operator=(const OnVolume&) = delete;
    ~OnVolume() { macplatform::SetStartupVolume(""); }
};

PreferencesFile readPreferences(const std::string& macPath) {
    PreferencesFile file;
    file.path = macPath;
    const std::string path = macplatform::HostPath(macPath);
    struct stat status {};
    if (path.empty() || stat(path.c_str(), &status) < 0) {
        const int number = errno;
        file.problem = std::string("cannot be read: ") + std::strerror(number);
    } else if (!S_ISREG(status.st_mode)) {
        file.problem = "is not a file"; // opening a pipe would wait for a writer
    } else {
        macplatform::PropertyListFile plist = macplatform::ReadPropertyList(path);
        if (plist.errorNumber != 0) {
            file.problem = std::string("cannot be read: ") + std::strerror(plist.errorNumber);
        } else if (!plist.error.empty()) {
            file.problem = "is not a property list";
        } else if (plist.root.kind != macplatform::PropertyValue::Kind::kDictionary) {
            file.problem = "is not a dictionary of keys";
        }
        for (std::size_t i = 0; file.problem.empty() && i < plist.root.keys.size(); ++i) {
            file.values.insert_or_assign(plist.root.keys[i], std::move(plist.root.values[i]));
        }
    }
    return file;
}

void readAllPreferences(const std::string& volume, VolumeState& state) {
    const OnVolume mapping(volume);
    const std::string folder = macplatform::HostPath(kPreferencesFolder);
    errno = 0;
    const std::vector<std::string> names = namesIn(folder);
    if (errno != 0 && errno != ENOENT) {
        const int number = errno;
        state.problems.push_back(std::string(kPreferencesFolder) +
                                 ": cannot be read: " + std::strerror(number));
    }
    for (const std::string& name : names) {
        const std::string macPath = std::string(kPreferencesFolder) + '/' + name;
        if (!IsPreferencesPath(macPath)) continue;
        state.preferences.emplace(name.substr(0, name.size() - kPropertyListExtension.size()),
                                  readPreferences(macPath));
    }
}

} // namespace

bool IsPreferencesPath(const std::string& macPath) {
    const std::string_view path = macPath;
    const std::string_view folder = kPreferencesFolder;
    if (path.size() <= folder.size() + 1 + kPropertyListExtension.size()) return false;
    const std::string_view name = path.substr(folder.size() + 1);
    return path.substr(0, folder.size()) == folder && path[folder.size()] == '/' &&
           name.find('/') == std::string_view::npos && name.substr(0, 2) != "._" &&
           name.substr(name.size() - kPropertyListExtension.size()) == kPropertyListExtension;
}

VolumeState ReadVolume(const std::string& volume) {
    VolumeState state;
    Walk(volume, state).Run();
    readAllPreferences(volume, state);
    return state;
}

} // namespace xcodhost
