#include <Kelbase/IPP/IPP_kernels.h>

#include <cpuid.h>

namespace {

// Bits of the register sets that the operating system saves.
constexpr unsigned int kAvxState = 0x06;    // SSE and AVX
constexpr unsigned int kAvx512State = 0xE6; // AVX-512 in addition

/// Returns whether the operating system saves all register sets of `states`, and the processor has FMA and
/// all features of `features`, which are bits of leaf 7.
bool hasAvx(unsigned int states, unsigned int features) {
    unsigned int eax, ebx, ecx, edx;
    const unsigned int wanted = bit_FMA | bit_OSXSAVE | bit_AVX;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || (ecx & wanted) != wanted) return false;
    __asm__("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
    if ((eax & states) != states) return false;
    constexpr unsigned int extendedFeatures = 7;
    // Old headers lack __get_cpuid_count. The result of __get_cpuid_max is signed in some headers.
    if (static_cast<unsigned int>(__get_cpuid_max(0, nullptr)) < extendedFeatures) return false;
    __cpuid_count(extendedFeatures, 0, eax, ebx, ecx, edx);
    return (ebx & features) == features;
}

} // namespace

bool IPP::HasSse2() {
    unsigned int eax, ebx, ecx, edx;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) && (edx & bit_SSE2);
}
bool IPP::HasAvx2() { return hasAvx(kAvxState, bit_AVX2); }
bool IPP::HasAvx512() { return hasAvx(kAvx512State, bit_AVX2 | bit_AVX512F); }

bool IPP::FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    if (std::memcmp(pattern, pattern + 4, 4) != 0) return false;
    unsigned int value;
    std::memcpy(&value, pattern, sizeof value);
    std::size_t count = bytes / sizeof value;
    __asm__ volatile("rep stosl" : "+D"(dst), "+c"(count) : "a"(value) : "memory");
    std::memcpy(dst, pattern, bytes % sizeof value); // the last element of 2 bytes
    return true;
}

const IPP::Implementation* const IPP::kAllImplementations[] = {
    &kAvx512Implementation, &kAvx2Implementation, &kSse2Implementation, &kScalarImplementation, nullptr};
