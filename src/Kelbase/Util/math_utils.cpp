#include <Kelbase/Util/math_utils.h>

#include <cstring>

namespace {

/// The number whose fraction has `fractionBits` bits and whose exponent is stored with `bias` added. It is
/// put together from its bits: exact by construction, and no C library is asked.
template <typename Float, typename Bits>
Float powerOfTwo(long long exponent, int fractionBits, int bias) {
    static_assert(std::numeric_limits<Float>::is_iec559 && sizeof(Float) == sizeof(Bits),
                  "the bit pattern below is that of IEEE 754");
    if (exponent > bias) return std::numeric_limits<Float>::infinity();
    if (exponent < 1 - bias - fractionBits) return 0; // half the smallest denormal rounds to even, so to 0
    const Bits bits = exponent > -bias ? static_cast<Bits>(exponent + bias) << fractionBits
                                       : Bits(1) << (exponent + bias + fractionBits - 1);
    Float result;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

} // namespace

float Util::PowerOfTwo(long long exponent) { return powerOfTwo<float, unsigned int>(exponent, 23, 127); }

double Util::PowerOfTwoDouble(long long exponent) {
    return powerOfTwo<double, unsigned long long>(exponent, 52, 1023);
}
