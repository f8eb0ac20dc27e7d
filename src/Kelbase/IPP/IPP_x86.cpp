#include <Kelbase/IPP/IPP_kernels.h>

#include <cpuid.h>

namespace {

/// Returns a bit for each register set that the operating system saves: bit 1 for SSE, bit 2 for AVX.
unsigned int savedRegisters() {
    unsigned int low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

} // namespace

bool IPP::HasSse2() {
    unsigned int eax, ebx, ecx, edx;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) && (edx & bit_SSE2);
}

bool IPP::HasAvx2() {
    unsigned int eax, ebx, ecx, edx;
    const unsigned int wanted = bit_FMA | bit_OSXSAVE | bit_AVX;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx) || (ecx & wanted) != wanted) return false;
    if ((savedRegisters() & 6) != 6) return false;
    constexpr unsigned int extendedFeatures = 7;
    // Old headers lack __get_cpuid_count. The result of __get_cpuid_max is signed in some headers.
    if (static_cast<unsigned int>(__get_cpuid_max(0, nullptr)) < extendedFeatures) return false;
    __cpuid_count(extendedFeatures, 0, eax, ebx, ecx, edx);
    return ebx & bit_AVX2;
}

bool IPP::FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    if (std::memcmp(pattern, pattern + 4, 4) != 0) return false;
    unsigned int value;
    std::memcpy(&value, pattern, sizeof value);
    std::size_t count = bytes / sizeof value;
    __asm__ volatile("rep stosl" : "+D"(dst), "+c"(count) : "a"(value) : "memory");
    std::memcpy(dst, pattern, bytes % sizeof value); // the last element of 2 bytes
    return true;
}

const IPP::Implementation* const IPP::kAllImplementations[] = {&kAvx2Implementation, &kSse2Implementation,
                                                               &kScalarImplementation, nullptr};
