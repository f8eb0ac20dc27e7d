#include <Kelbase/IPP/IPP_implementations.h>

#include <Kelbase/IPP/IPP_blocks.h>

#include <cstring>

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
