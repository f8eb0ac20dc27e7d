#include <Kelbase/IPP/IPP_util.h>

#include <Kelbase/IPP/IPP_implementations.h>
#include <Kelbase/Util/math_utils.h>

#include <cstring>

namespace {

// The size in bytes of an array fits a size_t, so the products do not overflow. The functions of the C
// library are not called with a count of 0, because they must not get null pointers.

template <typename T>
void moveElements(unsigned int count, const T* src, T* dst) {
    if (count) std::memmove(dst, src, std::size_t(count) * sizeof(T));
}

template <typename T>
void setElements(unsigned int count, T* dst, T value) {
    if (value == T(0)) {
        IPP::Zero(count, dst);
        return;
    }
    unsigned char pattern[8];
    for (std::size_t i = 0; i < sizeof pattern; i += sizeof value)
        std::memcpy(pattern + i, &value, sizeof value);
    IPP::DispatchedImplementation().fill(std::size_t(count) * sizeof(T),
                                         reinterpret_cast<unsigned char*>(dst), pattern);
}

/// Returns 1 shifted left in 32 bits, read as a signed number: a shift of 31 gives -2^31.
double shiftedOne(unsigned int shift) {
    return shift % 32 == 31 ? -2147483648.0 : static_cast<double>(1u << shift % 32);
}

} // namespace

void IPP::Move(unsigned int count, const unsigned char* src, unsigned char* dst) {
    moveElements(count, src, dst);
}
void IPP::Move(unsigned int count, const short* src, short* dst) { moveElements(count, src, dst); }
void IPP::Move(unsigned int count, const float* src, float* dst) { moveElements(count, src, dst); }
void IPP::Move(unsigned int count, const double* src, double* dst) { moveElements(count, src, dst); }

void IPP::Set(unsigned int count, unsigned char* dst, unsigned char value) {
    if (count) std::memset(dst, value, count);
}
void IPP::Set(unsigned int count, short* dst, short value) { setElements(count, dst, value); }
void IPP::Set(unsigned int count, int* dst, int value) { setElements(count, dst, value); }
void IPP::Set(unsigned int count, unsigned int* dst, unsigned int value) { setElements(count, dst, value); }
void IPP::Set(unsigned int count, float* dst, float value) { setElements(count, dst, value); }
void IPP::Set(unsigned int count, double* dst, double value) { setElements(count, dst, value); }

void IPP::Convert(unsigned int count, const unsigned char* src, float* dst) {
    DispatchedImplementation().charToFloat(count, src, dst);
}

void IPP::Convert(unsigned int count, const float* src, double* dst) {
    DispatchedImplementation().floatToDouble(count, src, dst);
}

void IPP::Convert(unsigned int count, const double* src, float* dst) {
    DispatchedImplementation().doubleToFloat(count, src, dst);
}

void IPP::Convert(unsigned int count, const short* src, float* dst, int scale) {
    const double factor = 1 / shiftedOne(static_cast<unsigned int>(scale));
    DispatchedImplementation().shortToFloat(count, src, dst, static_cast<float>(factor));
}

void IPP::Convert(unsigned int count, const short* src, double* dst, int scale) {
    DispatchedImplementation().shortToDouble(count, src, dst,
                                             1 / shiftedOne(static_cast<unsigned int>(scale)));
}

// The scale is widened before it is negated, because the smallest int has no negation.

void IPP::Convert(unsigned int count, const int* src, float* dst, int scale) {
    DispatchedImplementation().intToFloat(count, src, dst, Util::PowerOfTwo(-static_cast<long long>(scale)));
}

void IPP::Convert(unsigned int count, const int* src, double* dst, int scale) {
    DispatchedImplementation().intToDouble(count, src, dst,
                                           Util::PowerOfTwoDouble(-static_cast<long long>(scale)));
}

void IPP::Convert(unsigned int count, const float* src, short* dst, int scale, bool round) {
    const Implementation& implementation = DispatchedImplementation();
    const float factor = static_cast<float>(shiftedOne(0u - static_cast<unsigned int>(scale)));
    (round ? implementation.floatToShortRounded : implementation.floatToShort)(count, src, dst, factor);
}

void IPP::Convert(unsigned int count, const float* src, int* dst, int scale, bool round) {
    const Implementation& implementation = DispatchedImplementation();
    const float factor = Util::PowerOfTwo(-static_cast<long long>(scale));
    (round ? implementation.floatToIntRounded : implementation.floatToInt)(count, src, dst, factor);
}

void IPP::Convert(unsigned int, const float*, unsigned char*, int, bool) {}
void IPP::Convert(unsigned int, const double*, int*, int, bool) {}
