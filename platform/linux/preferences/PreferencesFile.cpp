#include "PreferencesFile.h"

#include "plist/BinaryPlistEdit.h"
#include "plist/BinaryPlistWriter.h"
#include "plist/PropertyListLimits.h"
#include "plist/PropertyListTree.h"
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
/// of a call to a bundle. Closing the descriptor releases the lock.
bool lock(int folder) {
    constexpr int attempts = 2500;
    for (int i = 0; i < attempts; ++i) {
        if (flock(folder, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        const timespec pause = {0, 2000000};
        nanosleep(&pause, nullptr);
    }
    return false;
}

bool isFileName(const std::string& domain) {
    return !domain.empty() && domain != "." && domain != ".." && domain.find('/') == std::string::npos &&
           domain.find('\0') == std::string::npos && domain.size() + std::strlen(".plist") <= NAME_MAX;
}

/// Returns whether a file of this format can store the string. XML cannot represent most control characters.
/// In both formats the parser ends a string at a NUL.
bool canHold(PropertyListFormat format, const std::string& text) {
    return std::none_of(text.begin(), text.end(), [format](char c) {
        const bool control = static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
        return c == '\0' || (control && format == PropertyListFormat::kXml);
    });
}

/// Returns the value as an encoded object of a binary property list.
std::string objectOf(const PreferenceValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return StringObject(*text);
    if (const auto* real = std::get_if<double>(&value)) return RealObject(*real);
    const std::int64_t number = std::get<std::int64_t>(value);
    const auto bits = static_cast<std::uint64_t>(number);
    return IntegerObject(number < 0 ? 0 - bits : bits, number < 0);
}

/// Returns the value as `ReadPropertyList` returns it after the value has been written.
PropertyValue asReadAgain(const PreferenceValue& value) {
    PropertyValue read;
    if (const auto* text = std::get_if<std::string>(&value)) {
        read.kind = PropertyValue::Kind::kString;
        read.text = *text;
    } else if (const auto* real = std::get_if<double>(&value)) {
        read.kind = PropertyValue::Kind::kReal;
        read.text = Digits(*real);
    } else {
        read.kind = PropertyValue::Kind::kInteger;
        read.integer = std::get<std::int64_t>(value);
        read.text = std::to_string(read.integer);
    }
    return read;
}

/// Returns the entries of a dictionary after the changes. The remaining entries keep their order. New entries
/// follow, sorted by key.
PropertyValue withChanges(PropertyValue&& before, PreferenceChanges changes) {
    PropertyValue after;
    after.kind = PropertyValue::Kind::kDictionary;
    for (std::size_t i = 0; i < before.keys.size(); ++i) {
        const auto change = changes.find(before.keys[i]);
        const bool isChanged = change != changes.end();
        if (!isChanged || change->second) {
            after.keys.push_back(std::move(before.keys[i]));
            after.values.push_back(isChanged ? asReadAgain(*change->second) : std::move(before.values[i]));
        }
        if (isChanged) changes.erase(change);
    }
    for (const auto& [key, value] : changes) {
        if (!value) continue;
        after.keys.push_back(key);
        after.values.push_back(asReadAgain(*value));
    }
    return after;
}

/// The preferences file of a domain. `Read`, `Apply` and `Write` must be called in this order. Each of them
/// returns an empty string, or an error message.
class DomainFile {
public:
    DomainFile(const FileDescriptor& openFolder, const std::string& folderPath, const std::string& domain)
        : folder(openFolder), name(domain + ".plist"), path(folderPath + '/' + name) {}

    std::string Read() {
        struct stat status {};
        if (fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) return why(path, errno);
            plist = EmptyBinaryPlist();
            return {};
        }
        exists = true;
        // If the file is a symbolic link, its target is resolved inside the volume. A change replaces the
        // link with a regular file.
        const std::string target = HostPath(std::string(kPreferencesFolder) + '/' + name);
        std::string bytes, error;
        if (const int failed = target.empty() ? errno : ReadWholeFile(target, kMaxPropertyListBytes, bytes)) {
            return why(path, failed);
        }
        plist = ToBinaryPlist(bytes, error);
        const PropertyListTree tree = plist.empty() ? nullptr : ParseBinaryPlist(plist, error);
        if (!tree) return path + ": " + error;
        format = FormatOf(bytes);
        entries = ValueOf(tree.get());
        if (entries.kind == PropertyValue::Kind::kDictionary) return {};
        return path + ": the root of the property list is not a dictionary";
    }

    /// Checks that the file can store the changes. Ignores changes that have no effect.
    std::string Apply(const PreferenceChanges& wanted) {
        for (const auto& [key, value] : wanted) {
            const auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
            if (!canHold(format, key) || (text && !canHold(format, *text))) {
                return path + ": the format of the file cannot store the control characters of " +
                       Quoted(key);
            }
        }
        changes = wanted;
        PreferenceChanges absent = wanted;
        for (std::size_t i = 0; i < entries.keys.size(); ++i) {
            const auto change = changes.find(entries.keys[i]);
            if (change == changes.end()) continue;
            absent.erase(change->first);
            if (change->second && asReadAgain(*change->second) == entries.values[i]) changes.erase(change);
        }
        for (const auto& [key, value] : absent) {
            if (!value) changes.erase(key);
        }
        return {};
    }

    std::string Write() {
        if (changes.empty()) return {};
        BinaryPlistChanges objects;
        for (const auto& [key, value] : changes) {
            objects.emplace(key, value ? std::optional(objectOf(*value)) : std::nullopt);
        }
        const auto edited = EditBinaryPlist(plist, objects);
        entries = withChanges(std::move(entries), std::move(changes));
        if (entries.keys.empty()) {
            return !exists || unlinkat(folder.Get(), name.c_str(), 0) == 0 ? std::string() : why(path, errno);
        }
        std::string bytes, error;
        if (edited) bytes = format == PropertyListFormat::kBinary ? *edited : ToXmlPlist(*edited);
        const PropertyListTree again = ParsePropertyList(bytes, error);
        if (!again || ValueOf(again.get()) != entries) {
            return path + ": the file cannot be rewritten without loss";
        }
        const int failed = ReplaceFile(folder.Get(), name, bytes);
        return failed == 0 ? std::string() : why(path, failed);
    }

private:
    const FileDescriptor& folder;
    std::string name, path;
    std::string plist;     ///< The property list in the binary format.
    PropertyValue entries; ///< The entries as read. After `Write`: the entries as written.
    PreferenceChanges changes;
    PropertyListFormat format = PropertyListFormat::kBinary;
    bool exists = false;
};

} // namespace

std::string StorePreferences(const std::string& domain, const PreferenceChanges& changes) {
    const InternalCallScope internalCalls;
    if (!isFileName(domain)) return Quoted(domain) + ": not a valid name for a preferences file";
    if (changes.empty()) return {};
    std::string folderPath;
    const FileDescriptor folder(openOrMakeFolder(folderPath));
    if (!folder) return why(folderPath.empty() ? kPreferencesFolder : folderPath, errno);
    if (!lock(folder.Get())) return folderPath + ": the directory is locked by another program";

    DomainFile file(folder, folderPath, domain);
    std::string failure = file.Read();
    if (failure.empty()) failure = file.Apply(changes);
    return failure.empty() ? file.Write() : failure;
}

} // namespace macplatform
