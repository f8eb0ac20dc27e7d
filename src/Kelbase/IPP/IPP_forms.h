#pragma once

/// The forms of the vector routines: one table of functions for each set of instructions. All forms give the
/// same bits. For the routines themselves, their tests and their benchmarks; everyone else calls IPP_util.h.

#include <cstddef>

namespace IPP {

struct Form {
    const char* name;
    bool (*isSupported)(); ///< Whether the processor at hand, and its operating system, can run it.

    /// Repeats the eight bytes of `pattern` over `bytes` bytes, which hold whole elements of 2, 4 or 8 bytes.
    void (*fill)(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

    void (*charToFloat)(unsigned int count, const unsigned char* src, float* dst);
    void (*floatToDouble)(unsigned int count, const float* src, double* dst);
    void (*doubleToFloat)(unsigned int count, const double* src, float* dst);

    // `factor` is a power of two with either sign, or 0 or infinity where the public routine says so.
    void (*shortToFloat)(unsigned int count, const short* src, float* dst, float factor);
    void (*shortToDouble)(unsigned int count, const short* src, double* dst, double factor);
    void (*intToFloat)(unsigned int count, const int* src, float* dst, float factor);
    void (*intToDouble)(unsigned int count, const int* src, double* dst, double factor);
    void (*floatToShort)(unsigned int count, const float* src, short* dst, float factor);
    void (*floatToShortRounded)(unsigned int count, const float* src, short* dst, float factor);
    void (*floatToInt)(unsigned int count, const float* src, int* dst, float factor);
    void (*floatToIntRounded)(unsigned int count, const float* src, int* dst, float factor);
};

extern const Form scalarForm;
extern const Form sse2Form; ///< Like the next one, only in builds for x86.
extern const Form avx2Form; ///< AVX2 and FMA.

/// The forms of this build, best first, ended by null. The last one, scalar, runs everywhere.
extern const Form* const allForms[];

/// The first form that the processor supports; found at the first call, then kept.
const Form& ChooseForm();
extern const Form* chosenForm; ///< Null until then.
inline const Form& ChosenForm() {
    // Threads that meet here at the first call find the same answer; the builtin keeps even that from being a
    // data race.
    const Form* const form = __atomic_load_n(&chosenForm, __ATOMIC_RELAXED);
    return form ? *form : ChooseForm();
}

} // namespace IPP
