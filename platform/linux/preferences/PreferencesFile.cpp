#include "PreferencesFile.h"

#include "plist/BinaryPlist.h"
#include "plist/PropertyListBytes.h"
#include "posix/AtomicFile.h"
#include "posix/WholeFile.h"
#include "trace/PlatformCall.h"

#include <macplatform/FileDescriptor.h>
#include <macplatform/StartupVolume.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>

namespace macplatform {

namespace {

constexpr char kPreferencesFolder[] = "/Library/Preferences";

std::string why(const std::string& object, int error) { return object + ": " + std::strerror(error); }

/// Creates a directory and its parents.
void makeFolder(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0755);
    }
    // The group of the directory (on the Mac: the administrators) may add files. `chmod` ignores the umask.
    if (mkdir(path.c_str(), 0775) == 0) chmod(path.c_str(), 0775);
}

/// Opens the preferences directory, and creates it if it does not exist. Stores its host path in `path`.
/// Returns the descriptor, or -1 with `errno` set.
int openOrMakeFolder(std::string& path) {
    path = HostPath(kPreferencesFolder);
    if (path.empty()) return -1;
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const int folder = open(path.c_str(), flags);
    if (folder >= 0 || errno != ENOENT) return folder;
    makeFolder(path);
    return open(path.c_str(), flags);
}

/// Locks the directory against other writers. Waits at most five seconds, which is well within the time limit
/// of a call to a bundle. Closing the descriptor releases the lock. Returns an empty string, or the reason.
std::string lock(int folder) {
    constexpr int attempts = 2500;
    for (int i = 0; i < attempts; ++i) {
        if (flock(folder, LOCK_EX | LOCK_NB) == 0) return "";
        if (errno != EWOULDBLOCK && errno != EINTR) return std::strerror(errno);
        const timespec pause = {0, 2000000};
        nanosleep(&pause, nullptr);
    }
    return "the directory is locked by another program";
}

bool isFileName(const std::string& domain) {
    return !domain.empty() && domain != "." && domain != ".." && domain.find('/') == std::string::npos &&
           domain.find('\0') == std::string::npos && domain.size() + std::strlen(".plist") <= NAME_MAX;
}

/// The preferences file of a domain. `Read`, `Apply` and `Write` must be called in this order. `Read` and
/// `Write` return an empty string, or an error message.
class DomainFile {
public:
    DomainFile(const FileDescriptor& openFolder, const std::string& folderPath, const std::string& domain)
        : folder(openFolder), name(domain + ".plist"), path(folderPath + '/' + name) {}

    std::string Read() {
        struct stat status {};
        if (fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) return why(path, errno);
            bytes = EmptyBinaryPlist();
            entries = ContainerValue(PropertyValue::Kind::kDictionary);
            return {};
        }
        // If the file is a symbolic link, its target is resolved inside the volume. A change replaces the
        // link with a regular file.
        const std::string target = HostPath(std::string(kPreferencesFolder) + '/' + name);
        if (const int failed = target.empty() ? errno : ReadWholeFile(target, kMaxPropertyListBytes, bytes)) {
            return why(path, failed);
        }
        entries = ParsePropertyList(bytes).root;
        if (entries.kind == PropertyValue::Kind::kDictionary) return {};
        return path + ": the root of the property list is not a dictionary";
    }

    /// Accepts the changes. Ignores changes that have no effect.
    void Apply(const PropertyListChanges& wanted) {
        changes = wanted;
        PropertyListChanges absent = wanted;
        for (std::size_t i = 0; i < entries.keys.size(); ++i) {
            const auto change = changes.find(entries.keys[i]);
            if (change == changes.end()) continue;
            absent.erase(change->first);
            if (change->second && *change->second == entries.values[i]) changes.erase(change);
        }
        for (const auto& [key, value] : absent) {
            if (!value) changes.erase(key);
        }
    }

    std::string Write() {
        if (changes.empty()) return {};
        const EditedPropertyList edited = EditPropertyList(bytes, changes);
        if (edited.root.keys.empty()) { // keys were removed, so that the file exists
            return unlinkat(folder.Get(), name.c_str(), 0) == 0 ? std::string() : why(path, errno);
        }
        const int failed = ReplaceFile(folder.Get(), name, edited.bytes);
        if (failed != 0) return why(path, failed);
        if (!edited.lost.empty()) lost = path + ": lost " + edited.lost;
        return {};
    }

    const std::string& Path() const { return path; }
    const std::string& Lost() const { return lost; } ///< What the written file has lost.

private:
    const FileDescriptor& folder;
    std::string name, path;
    std::string bytes;     ///< The bytes of the file.
    PropertyValue entries; ///< The entries of the file.
    PropertyListChanges changes;
    std::string lost;
};

/// Reads, changes and writes the file. Returns an empty string, or the error message.
std::string update(DomainFile& file, const PropertyListChanges& changes) {
    try {
        std::string failure = file.Read();
        if (!failure.empty()) return failure;
        file.Apply(changes);
        return file.Write();
    } catch (const PropertyListError& error) {
        return file.Path() + ": " + error.what();
    }
}

} // namespace

StoreResult StorePreferences(const std::string& domain, const PropertyListChanges& changes) {
    const InternalCallScope internalCalls;
    if (!isFileName(domain)) return {Quoted(domain) + ": not a valid name for a preferences file", {}};
    if (changes.empty()) return {};
    std::string folderPath;
    const FileDescriptor folder(openOrMakeFolder(folderPath));
    if (!folder) return {why(folderPath.empty() ? kPreferencesFolder : folderPath, errno), {}};
    std::string failure = lock(folder.Get());
    if (!failure.empty()) return {folderPath + ": " + failure, {}};

    DomainFile file(folder, folderPath, domain);
    failure = update(file, changes);
    return {std::move(failure), file.Lost()};
}

} // namespace macplatform
