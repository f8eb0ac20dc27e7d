#include "DarwinFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/statfs.h>

// Calls the symbol `fopen64`. The platform interposes this symbol and redirects the path to the startup
// volume.
extern "C" {
std::FILE* DarwinOpen(const char* path, const char* mode) __asm__("fopen64");
}

namespace macplatform {

namespace {

/// An error number that is different on Linux and on the Mac.
struct ErrorNumber {
    int here; ///< On Linux.
    int mac;
};
constexpr ErrorNumber kErrorNumbers[] = {
    {EAGAIN, 35}, {EDEADLK, 11},   {ENAMETOOLONG, 63}, {ENOLCK, 77},      {ENOSYS, 78},    {ENOTEMPTY, 66},
    {ELOOP, 62},  {EOVERFLOW, 84}, {EILSEQ, 92},       {ENOTSUP, 45},     {ETIMEDOUT, 60}, {EDQUOT, 69},
    {ESTALE, 70}, {ECANCELED, 89}, {ENODATA, 93},      {EINPROGRESS, 36}, {EALREADY, 37},  {ENOTSOCK, 38},
};

int macErrorNumber(int number) {
    for (const ErrorNumber& pair : kErrorNumbers) {
        if (pair.here == number) return pair.mac;
    }
    return number;
}

/// Returns the address of the `errno` of the code for the Mac. If the `errno` of Linux is set, converts its
/// value to the Mac's number, stores the number at this address and clears the `errno` of Linux. The code for
/// the Mac thus reads the errors of the C library and also the values that it has stored itself.
int* errorAddress() {
    static int gNumber = 0;
    if (errno != 0) gNumber = macErrorNumber(errno);
    errno = 0;
    return &gNumber;
}

std::FILE* gStandardError = nullptr;

struct MacTime {
    std::int32_t seconds, nanoseconds;
};
/// The structure `stat` of the Mac with 64-bit inode numbers.
struct MacStatus {
    std::int32_t device;
    std::uint16_t mode, links;
    std::uint64_t number __attribute__((packed, aligned(4)));
    std::uint32_t user, group;
    std::int32_t special;
    MacTime accessed, modified, changed, born;
    std::int64_t size __attribute__((packed, aligned(4)));
    std::int64_t blocks __attribute__((packed, aligned(4)));
    std::int32_t blockSize;
    std::uint32_t flags, generation;
    std::int32_t spare[5];
};
static_assert(sizeof(MacStatus) == 108);

MacTime macTime(const timespec& time) {
    return {static_cast<std::int32_t>(time.tv_sec), static_cast<std::int32_t>(time.tv_nsec)};
}

/// Calls a function of Linux that returns the status of an item, and converts the status for the Mac.
template <typename Item, int (*statusOf)(Item, struct stat*)>
int macStatus(Item item, MacStatus* out) {
    struct stat status {};
    if (const int result = statusOf(item, &status)) return result;
    *out = {};
    out->device = static_cast<std::int32_t>(status.st_dev);
    out->mode = static_cast<std::uint16_t>(status.st_mode);
    out->links = static_cast<std::uint16_t>(status.st_nlink);
    out->number = status.st_ino;
    out->user = status.st_uid;
    out->group = status.st_gid;
    out->special = static_cast<std::int32_t>(status.st_rdev);
    out->accessed = macTime(status.st_atim);
    out->modified = macTime(status.st_mtim);
    out->changed = macTime(status.st_ctim);
    out->born = out->changed;
    out->size = status.st_size;
    out->blocks = status.st_blocks;
    out->blockSize = static_cast<std::int32_t>(status.st_blksize);
    return 0;
}

/// The structure `statfs` of the Mac with 64-bit inode numbers.
struct MacVolume {
    std::uint32_t blockSize;
    std::int32_t transferSize;
    std::uint64_t blocks, free, available, files, freeFiles;
    char rest[2168 - 48];
};
static_assert(sizeof(MacVolume) == 2168);

int volumeStatus(const char* path, MacVolume* out) {
    struct statfs status {};
    if (const int result = statfs(path, &status)) return result;
    *out = {};
    out->blockSize = static_cast<std::uint32_t>(status.f_bsize);
    out->transferSize = static_cast<std::int32_t>(status.f_bsize);
    out->blocks = status.f_blocks;
    out->free = status.f_bfree;
    out->available = status.f_bavail;
    out->files = status.f_files;
    out->freeFiles = status.f_ffree;
    return 0;
}

/// The structure `dirent` of the Mac with 64-bit inode numbers.
struct MacEntry {
    std::uint64_t number, place;
    std::uint16_t length, nameLength;
    std::uint8_t kind;
    char name[1024];
};

/// Returns the next entry of a directory in the Mac's structure, which the next call overwrites. Returns null
/// at the end. The types of entries have the same numbers on the Mac and on Linux.
MacEntry* nextEntry(DIR* folder) {
    static MacEntry gEntry;
    const dirent* const found = readdir(folder);
    if (!found) return nullptr;
    gEntry = {};
    gEntry.number = found->d_ino;
    gEntry.length = sizeof gEntry;
    gEntry.nameLength = static_cast<std::uint16_t>(std::strlen(found->d_name));
    gEntry.kind = found->d_type;
    std::memcpy(gEntry.name, found->d_name, gEntry.nameLength);
    return &gEntry;
}

int seek(std::FILE* file, std::int64_t place, int whence) { return fseeko(file, place, whence); }
std::int64_t filePosition(std::FILE* file) { return ftello(file); }
void zero(void* bytes, std::size_t size) { std::memset(bytes, 0, size); }

std::uint64_t divideUnsigned(std::uint64_t left, std::uint64_t right) { return left / right; }
std::uint64_t moduloUnsigned(std::uint64_t left, std::uint64_t right) { return left % right; }
std::int64_t divide(std::int64_t left, std::int64_t right) { return left / right; }
std::int64_t modulo(std::int64_t left, std::int64_t right) { return left % right; }

template <typename Function>
void* address(Function* function) {
    return reinterpret_cast<void*>(function);
}

} // namespace

const std::vector<DarwinCall>& DarwinFileCalls() {
    gStandardError = stderr;
    static const std::vector<DarwinCall> calls = {
        {"___error", address(&errorAddress)},
        {"___stderrp", &gStandardError},
        {"_stat$INODE64", address(&macStatus<const char*, &stat>)},
        {"_lstat$INODE64", address(&macStatus<const char*, &lstat>)},
        {"_fstat$INODE64", address(&macStatus<int, &fstat>)},
        {"_statfs$INODE64", address(&volumeStatus)},
        {"_opendir$INODE64$UNIX2003", address(static_cast<DIR* (*)(const char*)>(&opendir))},
        {"_readdir$INODE64", address(&nextEntry)},
        {"_closedir$UNIX2003", address(&closedir)},
        {"_fopen$UNIX2003", address(&DarwinOpen)},
        {"_fwrite$UNIX2003", address(&fwrite)},
        {"_fseeko", address(&seek)},
        {"_ftello", address(&filePosition)},
        {"_strtod$UNIX2003", address(&strtod)},
        {"_strerror$UNIX2003", address(&strerror)},
        {"_chmod$UNIX2003", address(static_cast<int (*)(const char*, mode_t)>(&chmod))},
        {"_realpath$DARWIN_EXTSN", address(static_cast<char* (*)(const char*, char*)>(&realpath))},
        {"___bzero", address(&zero)},
        {"___udivdi3", address(&divideUnsigned)},
        {"___umoddi3", address(&moduloUnsigned)},
        {"___divdi3", address(&divide)},
        {"___moddi3", address(&modulo)},
    };
    return calls;
}

} // namespace macplatform
