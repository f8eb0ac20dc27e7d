#include "AtomicFile.h"

#include <macplatform/FileDescriptor.h>

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace macplatform {

namespace {

constexpr char kTemporaryMark[] = ".cf#";

/// Returns the name of a temporary file. The result does not contain the name of the replaced file, because
/// that name may already have the maximum length.
std::string temporaryName(unsigned attempt) {
    return kTemporaryMark + std::to_string(getpid()) + '-' + std::to_string(attempt);
}

void removeLeftovers(int folder) {
    const int again = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (again < 0) return;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(fdopendir(again), &closedir);
    if (!listing) {
        close(again);
        return;
    }
    while (const dirent* const entry = readdir(listing.get())) {
        const std::string name = entry->d_name;
        if (name.compare(0, sizeof kTemporaryMark - 1, kTemporaryMark) == 0)
            unlinkat(folder, name.c_str(), 0);
    }
}

int writeAll(int file, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t wrote = write(file, bytes.data() + done, bytes.size() - done);
        if (wrote < 0 && errno == EINTR) continue;
        if (wrote < 0) return errno;
        done += static_cast<std::size_t>(wrote);
    }
    return 0;
}

/// Creates a file with these bytes and flushes the file to the disk. Returns 0 or an errno. The errno is
/// EEXIST if the name exists. After any other error the file may exist.
int writeTemporary(int folder, const std::string& name, const std::string& bytes) {
    const FileDescriptor file(openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file) return errno;
    if (const int failed = writeAll(file.Get(), bytes)) return failed;
    return fchmod(file.Get(), 0644) == 0 && fsync(file.Get()) == 0 ? 0 : errno;
}

} // namespace

int ReplaceFile(int folder, const std::string& name, const std::string& bytes) {
    removeLeftovers(folder);
    std::string temporary;
    int failed = EEXIST;
    for (unsigned attempt = 0; failed == EEXIST && attempt < 16; ++attempt) {
        temporary = temporaryName(attempt);
        failed = writeTemporary(folder, temporary, bytes);
    }
    if (failed == EEXIST) return failed;
    if (failed == 0 && renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) failed = errno;
    if (failed != 0) {
        unlinkat(folder, temporary.c_str(), 0);
        return failed;
    }
    return fsync(folder) == 0 ? 0 : errno;
}

} // namespace macplatform
