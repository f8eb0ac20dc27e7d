#include "FailingCalls.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <new>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

bool gIsArmed = false;
unsigned gLeft = 0;
int gError = 0;
const char* gFailed = nullptr;
std::size_t gLiveBlocks = 0;

bool mustFail(const char* name) {
    if (!gIsArmed || gLeft-- > 0) return false;
    gIsArmed = false;
    gFailed = name;
    errno = gError;
    return true;
}

} // namespace

FailingCall::FailingCall(unsigned number, int errorNumber) {
    gLeft = number;
    gError = errorNumber;
    gFailed = nullptr;
    gIsArmed = true;
}
FailingCall::~FailingCall() { gIsArmed = false; }
const char* FailingCall::Name() const { return gFailed; }

std::size_t LiveBlocks() { return gLiveBlocks; }

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    void* const block = mustFail("malloc") ? nullptr : __real_malloc(size);
    if (block) ++gLiveBlocks;
    return block;
}
extern "C" void __real_free(void* block);
extern "C" void __wrap_free(void* block) {
    if (block) --gLiveBlocks;
    __real_free(block);
}

void* operator new(std::size_t size) {
    if (void* const block = std::malloc(size ? size : 1)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

/// Replaces a function of the C library. 32-bit code calls the variants for large files. Only a macro can
/// define a function with a given symbol.
#define FAILING_CALL(RESULT, FAILURE, NAME, SYMBOL, PARAMETERS, ARGUMENTS)                                   \
    extern "C" RESULT __real_##SYMBOL PARAMETERS;                                                            \
    extern "C" RESULT __wrap_##SYMBOL PARAMETERS {                                                           \
        return mustFail(#NAME) ? FAILURE : __real_##SYMBOL ARGUMENTS;                                        \
    }

FAILING_CALL(FILE*, nullptr, fopen, fopen, (const char* path, const char* mode), (path, mode))
FAILING_CALL(int, -1, fseeko, fseeko, (FILE * file, off_t place, int from), (file, place, from))
FAILING_CALL(off_t, -1, ftello, ftello, (FILE * file), (file))
FAILING_CALL(int, -1, stat, stat, (const char* path, void* status), (path, status))
FAILING_CALL(int, -1, fstat, fstat, (int file, void* status), (file, status))
FAILING_CALL(int, -1, statfs, statfs, (const char* path, void* status), (path, status))
FAILING_CALL(dirent*, nullptr, readdir, readdir, (DIR * folder), (folder))
FAILING_CALL(DIR*, nullptr, opendir, opendir, (const char* path), (path))
FAILING_CALL(int, -1, access, access, (const char* path, int mode), (path, mode))
FAILING_CALL(int, -1, chmod, chmod, (const char* path, mode_t mode), (path, mode))
FAILING_CALL(int, -1, utimes, utimes, (const char* path, const timeval* times), (path, times))
FAILING_CALL(int, -1, remove, remove, (const char* path), (path))
FAILING_CALL(int, -1, rename, rename, (const char* from, const char* to), (from, to))
FAILING_CALL(int, -1, mkdir, mkdir, (const char* path, mode_t mode), (path, mode))
FAILING_CALL(int, -1, rmdir, rmdir, (const char* path), (path))
FAILING_CALL(FILE*, nullptr, fopen, fopen64, (const char* path, const char* mode), (path, mode))
FAILING_CALL(int, -1, fseeko, fseeko64, (FILE * file, off_t place, int from), (file, place, from))
FAILING_CALL(off_t, -1, ftello, ftello64, (FILE * file), (file))
FAILING_CALL(int, -1, stat, stat64, (const char* path, void* status), (path, status))
FAILING_CALL(int, -1, fstat, fstat64, (int file, void* status), (file, status))
FAILING_CALL(int, -1, statfs, statfs64, (const char* path, void* status), (path, status))
FAILING_CALL(dirent*, nullptr, readdir, readdir64, (DIR * folder), (folder))

extern "C" int __real_fclose(FILE* file);
extern "C" int __wrap_fclose(FILE* file) {
    const bool fails = mustFail("fclose");
    const int result = __real_fclose(file);
    if (fails) errno = gError;
    return fails ? EOF : result;
}

/// Calls a function that transfers bytes. A failing call transfers half of its elements.
template <typename Transfer, typename Bytes>
static std::size_t transferred(const char* name, Transfer transfer, Bytes bytes, std::size_t size,
                               std::size_t count, FILE* file) {
    const bool fails = mustFail(name);
    const std::size_t done = transfer(bytes, size, fails ? count / 2 : count, file);
    if (fails) errno = gError;
    return done;
}
extern "C" std::size_t __real_fread(void* bytes, std::size_t size, std::size_t count, FILE* file);
extern "C" std::size_t __wrap_fread(void* bytes, std::size_t size, std::size_t count, FILE* file) {
    return transferred("fread", &__real_fread, bytes, size, count, file);
}
extern "C" std::size_t __real_fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file);
extern "C" std::size_t __wrap_fwrite(const void* bytes, std::size_t size, std::size_t count, FILE* file) {
    return transferred("fwrite", &__real_fwrite, bytes, size, count, file);
}
