#include "WholeFile.h"

#include "trace/PlatformCall.h"

#include <macplatform/FileDescriptor.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace macplatform {

namespace {

int checkKind(int descriptor, std::size_t limit) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return errno;
    if (S_ISDIR(status.st_mode)) return EISDIR;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    return static_cast<unsigned long long>(status.st_size) > limit ? EFBIG : 0;
}

} // namespace

int ReadWholeFile(const std::string& path, std::size_t limit, std::string& bytes) {
    const InternalCallScope internalCalls;
    bytes.clear();
    // Without O_NONBLOCK, open would wait for a writer if the path is a pipe.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file) return errno;
    if (const int refused = checkKind(file.Get(), limit)) return refused;
    char block[64 * 1024];
    for (;;) {
        const ssize_t got = read(file.Get(), block, sizeof block);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return errno;
        if (got == 0) return 0;
        if (bytes.size() + static_cast<std::size_t>(got) > limit) return EFBIG; // the file has grown
        bytes.append(block, static_cast<std::size_t>(got));
    }
}

} // namespace macplatform
