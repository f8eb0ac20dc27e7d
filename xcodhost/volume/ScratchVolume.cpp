#include "ScratchVolume.h"

#include "Console.h"
#include "DisplayText.h"
#include "ExitStatus.h"
#include "process/Interruption.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace xcodhost {

namespace fs = std::filesystem;

namespace {

ToolFault cannotCopy(const std::string& path) {
    return ToolFault::FromErrno("the scratch copy of the volume: " + Printable(path));
}

/// Reads the value of an extended attribute. Returns false and sets errno on an error.
bool readAttribute(const char* path, const char* name, std::vector<char>& value) {
    while (true) {
        const ssize_t size = lgetxattr(path, name, nullptr, 0);
        if (size < 0) return false;
        value.resize(static_cast<std::size_t>(size));
        const ssize_t got = lgetxattr(path, name, value.data(), value.size());
        if (got >= 0) {
            value.resize(static_cast<std::size_t>(got));
            return true;
        }
        if (errno != ERANGE) return false; // ERANGE: the value has grown meanwhile
    }
}

void copyAttributes(const std::string& from, const std::string& to) {
    const ssize_t size = llistxattr(from.c_str(), nullptr, 0);
    if (size < 0 && errno != ENOTSUP) throw cannotCopy(from);
    if (size <= 0) return;
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t got = llistxattr(from.c_str(), names.data(), names.size());
    if (got < 0) throw cannotCopy(from);
    std::vector<char> value;
    for (const char* name = names.data(); name < names.data() + got; name += std::strlen(name) + 1) {
        // The file system assigns security labels by the location of a file.
        if (std::strncmp(name, "security.", 9) == 0 || std::strncmp(name, "system.", 7) == 0) continue;
        if (!readAttribute(from.c_str(), name, value)) throw cannotCopy(from);
        if (lsetxattr(to.c_str(), name, value.data(), value.size(), 0) < 0) {
            throw ToolFault::FromErrno("the scratch copy of the volume: " + Printable(to) + ": attribute " +
                                       Printable(name) + " (set TMPDIR to a directory that supports it)");
        }
    }
}

void copySettings(const std::string& from, const struct stat& status, const std::string& to) {
    // Only a privileged process can set another owner. A run must not need privileges, so EPERM is accepted.
    if (lchown(to.c_str(), status.st_uid, status.st_gid) < 0 && errno != EPERM) throw cannotCopy(to);
    copyAttributes(from, to);
    if (!S_ISLNK(status.st_mode) && chmod(to.c_str(), status.st_mode & 07777) < 0) throw cannotCopy(to);
    const struct timespec times[2] = {status.st_atim, status.st_mtim};
    if (utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW) < 0) throw cannotCopy(to);
}

/// Creates the item with its contents, a directory empty. Returns false for a socket or a device, which is
/// not copied.
bool copyContents(const std::string& from, const struct stat& status, const std::string& to) {
    std::error_code error;
    switch (status.st_mode & S_IFMT) {
    case S_IFDIR: fs::create_directory(to, error); break;
    case S_IFREG: fs::copy_file(from, to, error); break;
    case S_IFLNK: fs::copy_symlink(from, to, error); break;
    case S_IFIFO:
        if (mkfifo(to.c_str(), 0600) < 0) throw cannotCopy(to);
        break;
    default: return false;
    }
    if (error) throw ToolFault("the scratch copy of the volume: " + Printable(from) + ": " + error.message());
    return true;
}

/// Copies one item with its contents. The mode of a directory is set last, because it can forbid writing.
void copyItem(const std::string& from, const std::string& to, const Interruption& interruption) {
    interruption.Check();
    struct stat status {};
    if (lstat(from.c_str(), &status) < 0) throw cannotCopy(from);
    if (!copyContents(from, status, to)) return;
    if (S_ISDIR(status.st_mode)) CopyVolume(from, to, interruption);
    copySettings(from, status, to);
}

} // namespace

ScratchFolder::ScratchFolder(Use use) {
    constexpr const char* memory = "/dev/shm";
    std::error_code error;
    const bool isInMemory =
        use == Use::kSamples && !std::getenv("TMPDIR") && access(memory, W_OK | X_OK) == 0;
    path = ((isInMemory ? fs::path(memory) : fs::temp_directory_path(error)) / "xcodhost.XXXXXX").string();
    if (error) throw ToolFault("directory for temporary files: " + error.message() + "; set TMPDIR");
    if (!mkdtemp(path.data())) throw ToolFault::FromErrno(path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) Note("cannot remove the temporary directory " + path + ": " + error.message());
}

void CopyVolume(const std::string& from, const std::string& to, const Interruption& interruption) {
    std::error_code error;
    for (fs::directory_iterator entry(from, error), end; !error && entry != end; entry.increment(error)) {
        copyItem(entry->path().string(), (fs::path(to) / entry->path().filename()).string(), interruption);
    }
    if (error) throw ToolFault("the scratch copy of the volume: " + Printable(from) + ": " + error.message());
}

} // namespace xcodhost
