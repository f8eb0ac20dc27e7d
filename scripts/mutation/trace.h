#pragma once

// Records which statements a process executes, for scripts/mutate. Every source of the traced copy includes
// this header before all others, so that it includes no header that depends on macros of the source. A
// process maps the file of hits at a fixed address: a module that is loaded later, a child process, and a
// process that may no longer open files find it there.

#include <asm/unistd.h>

extern "C" long syscall(long number, ...) noexcept;
extern "C" int* __errno_location() noexcept __attribute__((const));

namespace mutation_trace {

inline __attribute__((visibility("hidden"))) unsigned char* gHits = nullptr;

/// Maps the file, or private memory where it cannot be opened. Does not change errno.
inline __attribute__((visibility("hidden"))) unsigned char* MapHits() {
    constexpr long kAddress = 0x3f0000000000, kSize = MUTATION_TRACE_SIZE;
    constexpr long kReadWrite = 3, kShared = 1, kPrivate = 2, kFixed = 0x10, kAnonymous = 0x20,
                   kNoReplace = 0x100000;
    constexpr long kCurrentDirectory = -100, kOpenFlags = 02000002; // O_RDWR | O_CLOEXEC
    const int error = *__errno_location();
    const long own =
        syscall(__NR_mmap, kAddress, kSize, kReadWrite, kPrivate | kAnonymous | kNoReplace, -1L, 0L);
    if (own == kAddress) {
        const long file = syscall(__NR_openat, kCurrentDirectory, MUTATION_TRACE_FILE, kOpenFlags);
        if (file >= 0) {
            syscall(__NR_mmap, kAddress, kSize, kReadWrite, kShared | kFixed, file, 0L);
            syscall(__NR_close, file);
        }
    }
    *__errno_location() = error;
    return gHits = reinterpret_cast<unsigned char*>(kAddress);
}

inline __attribute__((always_inline)) void Hit(unsigned number) { (gHits ? gHits : MapHits())[number] = 1; }

} // namespace mutation_trace
