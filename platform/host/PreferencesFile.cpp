#include "PreferencesFile.h"

#include "AtomicFile.h"
#include "Descriptor.h"
#include "PlatformCall.h"
#include "PropertyListBinary.h"
#include "PropertyListLimits.h"
#include "PropertyListTree.h"
#include "WholeFile.h"

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

constexpr char preferencesFolder[] = "/Library/Preferences";

std::string Why(const std::string& thing, int error) { return thing + ": " + std::strerror(error); }

/// Makes a folder, and everything on the way to it.
void MakeFolder(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0755);
    }
    // Admins may add files there, whatever this process's mask is.
    if (mkdir(path.c_str(), 0775) == 0) chmod(path.c_str(), 0775);
}

/// The folder as a descriptor; it is made when there is none.
int OpenFolder(std::string& path) {
    path = HostPath(preferencesFolder);
    if (path.empty()) return -1;
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const int folder = open(path.c_str(), flags);
    if (folder >= 0 || errno != ENOENT) return folder;
    MakeFolder(path);
    return open(path.c_str(), flags);
}

/// Waits for other writers, five seconds at most (well within the limit of a call to a bundle): the lock goes
/// with the descriptor.
bool Lock(int folder) {
    constexpr int attempts = 2500;
    for (int i = 0; i < attempts; ++i) {
        if (flock(folder, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        const timespec pause = {0, 2000000};
        nanosleep(&pause, nullptr);
    }
    return false;
}

bool IsFileName(const std::string& domain) {
    return !domain.empty() && domain != "." && domain != ".." && domain.find('/') == std::string::npos &&
           domain.find('\0') == std::string::npos && domain.size() + std::strlen(".plist") <= NAME_MAX;
}

/// XML has no form for most control characters, and the parser's texts end at a NUL.
bool CanHold(PropertyListFormat format, const std::string& text) {
    return std::none_of(text.begin(), text.end(), [format](char c) {
        const bool control = static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
        return c == '\0' || (control && format == PropertyListFormat::Xml);
    });
}

PropertyListTree NewNode(const PreferenceValue& value) {
    if (const auto* text = std::get_if<std::string>(&value))
        return PropertyListTree(plist_new_string(text->c_str()));
    if (const auto* number = std::get_if<std::int64_t>(&value)) {
        return PropertyListTree(plist_new_uint(static_cast<std::uint64_t>(*number)));
    }
    return PropertyListTree(plist_new_real(std::get<double>(value)));
}

/// The domain's file between being read and being replaced.
class DomainFile {
public:
    DomainFile(const Descriptor& openFolder, const std::string& folderPath, const std::string& domain)
        : folder(openFolder), name(domain + ".plist"), path(folderPath + '/' + name) {}

    std::string Read() {
        struct stat status {};
        if (fstatat(folder.Get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) return Why(path, errno);
            tree.reset(plist_new_dict());
            return {};
        }
        exists = true;
        // A link is read inside the volume, and replaced by a file when something changes.
        const std::string target = HostPath(std::string(preferencesFolder) + '/' + name);
        std::string bytes, error;
        if (const int failed = target.empty() ? errno : ReadWholeFile(target, maxPropertyListBytes, bytes)) {
            return Why(path, failed);
        }
        tree = ParsePropertyList(bytes, error);
        if (!tree) return path + ": " + error;
        format = FormatOf(bytes);
        if (format == PropertyListFormat::Binary) loss = BinaryListLoss(bytes);
        return plist_get_node_type(tree.get()) == PLIST_DICT ? std::string()
                                                             : path + ": it holds no dictionary";
    }

    std::string Apply(const PreferenceChanges& changes) {
        for (const auto& [key, value] : changes) {
            const auto* const text = value ? std::get_if<std::string>(&*value) : nullptr;
            if (!CanHold(format, key) || (text && !CanHold(format, *text))) {
                return path + ": its format has no form for the control characters of " + Quoted(key);
            }
            if (value) {
                Set(key, *value);
            } else {
                Remove(key);
            }
        }
        return {};
    }

    std::string Write() {
        if (!changed) return {};
        if (plist_dict_get_size(tree.get()) == 0) {
            return !exists || unlinkat(folder.Get(), name.c_str(), 0) == 0 ? std::string() : Why(path, errno);
        }
        if (!loss.empty()) return path + ": it cannot be written again without loss: it holds " + loss;
        const std::string bytes = WritePropertyList(tree.get(), format);
        std::string error;
        const PropertyListTree again = ParsePropertyList(bytes, error);
        if (!again || ValueOf(again.get()) != ValueOf(tree.get())) {
            return path + ": it cannot be written again without loss";
        }
        const int failed = ReplaceFile(folder.Get(), name, bytes);
        return failed == 0 ? std::string() : Why(path, failed);
    }

private:
    void Set(const std::string& key, const PreferenceValue& value) {
        PropertyListTree fresh = NewNode(value);
        if (!fresh) throw std::bad_alloc();
        const plist_t present = plist_dict_get_item(tree.get(), key.c_str());
        if (present && ValueOf(present) == ValueOf(fresh.get())) return;
        plist_dict_set_item(tree.get(), key.c_str(), fresh.release());
        changed = true;
    }

    void Remove(const std::string& key) {
        if (!plist_dict_get_item(tree.get(), key.c_str())) return;
        plist_dict_remove_item(tree.get(), key.c_str());
        changed = true;
    }

    const Descriptor& folder;
    std::string name, path;
    PropertyListTree tree;
    std::string loss; ///< What the tree lacks of the file.
    PropertyListFormat format = PropertyListFormat::Binary;
    bool exists = false, changed = false;
};

} // namespace

std::string StorePreferences(const std::string& domain, const PreferenceChanges& changes) {
    const PlatformInside inside;
    if (!IsFileName(domain)) return Quoted(domain) + " is no name of a preferences file";
    if (changes.empty()) return {};
    std::string folderPath;
    const Descriptor folder(OpenFolder(folderPath));
    if (!folder) return Why(folderPath.empty() ? preferencesFolder : folderPath, errno);
    if (!Lock(folder.Get())) return folderPath + ": another program keeps it locked";

    DomainFile file(folder, folderPath, domain);
    std::string failure = file.Read();
    if (failure.empty()) failure = file.Apply(changes);
    return failure.empty() ? file.Write() : failure;
}

} // namespace macplatform
