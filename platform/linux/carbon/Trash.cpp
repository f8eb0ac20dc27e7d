#include "Trash.h"

#include <macplatform/FileDescriptor.h>
#include <macplatform/StartupVolume.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace macplatform {

namespace {

/// A Trash directory.
struct TrashFolder {
    std::string path;
    /// The directory to which the paths in the records are relative. Empty if the paths are absolute.
    std::string top;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string pathIn(const std::string& folder, const std::string& name) {
    return folder.back() == '/' ? folder + name : folder + '/' + name;
}

bool isInside(const std::string& path, const std::string& folder) {
    return folder == "/" || path == folder || path.compare(0, folder.size() + 1, folder + '/') == 0;
}

bool deviceOf(const std::string& path, dev_t& device) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    device = status.st_dev;
    return true;
}

/// Returns whether the path is a directory and not a symbolic link. If the result is false, sets `errno`. A
/// Trash directory must not be a link, because the link could refer to another file system.
bool isRealFolder(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return false;
    if (S_ISDIR(status.st_mode)) return true;
    errno = ENOTDIR;
    return false;
}

/// Creates the directory and its parents with mode 0700.
bool makeFolders(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0700);
    }
    return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

std::string homeTrash() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data && *data == '/') return pathIn(data, "Trash");
    const char* const home = std::getenv("HOME");
    return home && *home == '/' ? pathIn(home, ".local/share/Trash") : std::string();
}

/// Returns the top directory of the file system that contains the item. `device` is the device of its
/// directory.
std::string fileSystemTop(const std::string& path, dev_t device) {
    std::string top = folderOf(path);
    for (dev_t above = 0; top != "/" && deviceOf(folderOf(top), above) && above == device;)
        top = folderOf(top);
    return top;
}

/// Returns the Trash of the file system with the top directory `top`. If the administrator has created the
/// directory `.Trash` with the sticky bit, the Trash is `.Trash/UID`. Otherwise the Trash is `.Trash-UID`.
TrashFolder trashAtTop(const std::string& top) {
    const std::string user = std::to_string(getuid()), common = pathIn(top, ".Trash");
    struct stat status {};
    const bool usable =
        lstat(common.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX);
    if (usable && makeFolders(pathIn(common, user))) return {pathIn(common, user), top};
    return {pathIn(top, ".Trash-" + user), top};
}

TrashFolder trashFor(const std::string& path) {
    const std::string& volume = StartupVolume();
    if (!volume.empty() && isInside(path, volume)) return trashAtTop(volume);
    dev_t own = 0, homes = 0;
    deviceOf(folderOf(path), own);
    const std::string home = homeTrash();
    const bool isHomeUsable = !home.empty() && makeFolders(home) && deviceOf(home, homes);
    if (isHomeUsable && own == homes) return {home, ""};
    return trashAtTop(fileSystemTop(path, own));
}

/// Returns whether an item must not be moved to the Trash. The comment of `MoveToTrash` lists these items.
bool isProtected(const std::string& path, const std::string& trash) {
    const char* const home = std::getenv("HOME");
    struct stat own {
    }, above{};
    const bool isMountPoint = lstat(path.c_str(), &own) == 0 && S_ISDIR(own.st_mode) &&
                              stat(folderOf(path).c_str(), &above) == 0 &&
                              (own.st_dev != above.st_dev || own.st_ino == above.st_ino);
    return isMountPoint || (home && path == home) || path == StartupVolume() || isInside(trash, path) ||
           isInside(path, trash);
}

std::string percentEncoded(const std::string& path) {
    static const char hex[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isUnreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                  (c >= '0' && c <= '9') || c == '/' || c == '-' || c == '_' || c == '.' ||
                                  c == '~';
        if (isUnreserved) {
            encoded += c;
        } else {
            ((encoded += '%') += hex[byte >> 4]) += hex[byte & 15];
        }
    }
    return encoded;
}

std::string recordText(const std::string& path, const TrashFolder& trash) {
    const std::string shown =
        trash.top.empty() ? path : path.substr(trash.top == "/" ? 1 : trash.top.size() + 1);
    const time_t now = std::time(nullptr);
    tm parts{};
    localtime_r(&now, &parts);
    char date[32] = "";
    (void)std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
    return "[Trash Info]\nPath=" + percentEncoded(shown) + "\nDeletionDate=" + date + "\n";
}

/// Returns the name for an attempt: "photo.jpg", "photo.2.jpg", ... A long name is shortened, so that the
/// name of its record does not exceed the limit of the file system.
std::string numberedName(std::string name, unsigned number) {
    if (name.size() > 230) name.resize(230);
    if (number == 1) return name;
    const std::size_t dot = name.rfind('.');
    const std::size_t cut = dot == std::string::npos || dot == 0 ? name.size() : dot;
    return name.substr(0, cut) + '.' + std::to_string(number) + name.substr(cut);
}

/// Creates the file of a record. Returns 0 or an errno. After an error, the new file does not exist.
int makeRecord(const std::string& info, const std::string& record) {
    const FileDescriptor file(open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file) return errno;
    const ssize_t wrote = write(file.Get(), record.data(), record.size());
    if (wrote == static_cast<ssize_t>(record.size())) return 0;
    const int failed = wrote < 0 ? errno : ENOSPC;
    unlink(info.c_str());
    return failed;
}

/// Reserves an unused name in the Trash: creates the record for the name. Returns the name. Returns an empty
/// string and sets `errno` after an error.
std::string reserveName(const std::string& path, const TrashFolder& trash) {
    const std::string record = recordText(path, trash);
    for (unsigned number = 1; number < 100000; ++number) {
        std::string name = numberedName(nameOf(path), number);
        struct stat status {};
        if (lstat((trash.path + "/files/" + name).c_str(), &status) == 0) continue;
        const int failed = makeRecord(trash.path + "/info/" + name + ".trashinfo", record);
        if (failed == 0) return name;
        if (failed == EEXIST) continue;
        errno = failed;
        return {};
    }
    errno = EEXIST;
    return {};
}

} // namespace

int MoveToTrash(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return errno;
    const TrashFolder trash = trashFor(path);
    if (isProtected(path, trash.path)) return EBUSY;
    for (const char* folder : {"", "/files", "/info"}) {
        const std::string each = trash.path + folder;
        if (!makeFolders(each) || (!trash.top.empty() && !isRealFolder(each))) return errno;
    }
    const std::string name = reserveName(path, trash);
    if (name.empty()) return errno;
    if (rename(path.c_str(), (trash.path + "/files/" + name).c_str()) != 0) {
        const int failed = errno;
        unlink((trash.path + "/info/" + name + ".trashinfo").c_str());
        return failed;
    }
    // A failure is ignored: most items have no sidecar, and a sidecar that cannot be moved remains.
    (void)rename(pathIn(folderOf(path), "._" + nameOf(path)).c_str(),
                 (trash.path + "/files/._" + name).c_str());
    return 0;
}

} // namespace macplatform
