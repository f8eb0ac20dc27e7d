#pragma once

/// @file
/// The implementations of the vector routines: one table of functions for each instruction set. All
/// implementations give the same bits. Only the routines, their tests and their benchmarks include this
/// header; all other code uses IPP_util.h.

#include <cstddef>

namespace IPP {

/// One implementation of the vector routines.
struct Implementation {
    const char* name;
    bool (*isSupported)(); ///< Returns whether processor and operating system can run it.

    /// Repeats the eight bytes of `pattern` over `bytes` bytes. `bytes` is a multiple of the element size of
    /// 2, 4 or 8 bytes.
    void (*fill)(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

    void (*charToFloat)(unsigned int count, const unsigned char* src, float* dst);
    void (*floatToDouble)(unsigned int count, const float* src, double* dst);
    void (*doubleToFloat)(unsigned int count, const double* src, float* dst);

    // `factor` is a power of two of either sign, or 0 or infinity if the public routine allows it.
    void (*shortToFloat)(unsigned int count, const short* src, float* dst, float factor);
    void (*shortToDouble)(unsigned int count, const short* src, double* dst, double factor);
    void (*intToFloat)(unsigned int count, const int* src, float* dst, float factor);
    void (*intToDouble)(unsigned int count, const int* src, double* dst, double factor);
    void (*floatToShort)(unsigned int count, const float* src, short* dst, float factor);
    void (*floatToShortRounded)(unsigned int count, const float* src, short* dst, float factor);
    void (*floatToInt)(unsigned int count, const float* src, int* dst, float factor);
    void (*floatToIntRounded)(unsigned int count, const float* src, int* dst, float factor);
};

extern const Implementation kScalarImplementation;
extern const Implementation kSse2Implementation;   ///< Exists only in builds for x86, as the next two.
extern const Implementation kAvx2Implementation;   ///< Uses AVX2 and FMA.
extern const Implementation kAvx512Implementation; ///< Uses AVX-512F, AVX2 and FMA.

/// The implementations of this build, the best one first, ended by null. The last one is
/// kScalarImplementation, which every processor can run.
extern const Implementation* const kAllImplementations[];

/// Selects the first implementation that the processor supports. `DispatchedImplementation` calls it once.
const Implementation& SelectImplementation();
extern const Implementation* gDispatchedImplementation; ///< The dispatched implementation, null until
                                                        ///< SelectImplementation has been called.
/// Returns the dispatched implementation.
inline const Implementation& DispatchedImplementation() {
    // Threads that make the first call at the same time find the same implementation. The builtin prevents a
    // data race.
    const Implementation* const implementation =
        __atomic_load_n(&gDispatchedImplementation, __ATOMIC_RELAXED);
    return implementation ? *implementation : SelectImplementation();
}

} // namespace IPP
