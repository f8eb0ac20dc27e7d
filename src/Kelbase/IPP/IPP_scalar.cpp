#include <Kelbase/IPP/IPP_implementations.h>

#include <Kelbase/Util/math_utils.h>

#include <cfloat>
#include <cstring>
#include <limits>

// The reference implementation. The other implementations use it for arrays that are shorter than one of
// their blocks.

namespace {

static_assert(FLT_EVAL_METHOD == 0,
              "each operation must round to its own type: build with SSE2, not the x87");
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<double>::is_iec559,
              "overflow must give infinity");

void fill(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    std::size_t done = 0;
    for (; bytes - done >= 8; done += 8) std::memcpy(dst + done, pattern, 8);
    for (; done < bytes; done += 2) std::memcpy(dst + done, pattern + done % 8, 2);
}

template <typename From, typename To>
void widenOrNarrow(unsigned int count, const From* src, To* dst) {
    for (unsigned int i = 0; i < count; ++i) dst[i] = static_cast<To>(src[i]);
}

template <typename From, typename To>
void scale(unsigned int count, const From* src, To* dst, To factor) {
    for (unsigned int i = 0; i < count; ++i) dst[i] = static_cast<To>(src[i]) * factor;
}

int toInt(float x, float factor) { return Util::TruncateToInt(x * factor); }

/// Rounds with the sign of the source. A negative factor gives the product the other sign.
int toIntRounded(float x, float factor) {
    return Util::TruncateToInt(x * factor + Util::HalfAwayFromZero(x));
}

template <int (*convertOne)(float, float)>
void scaleToInt(unsigned int count, const float* src, int* dst, float factor) {
    for (unsigned int i = 0; i < count; ++i) dst[i] = convertOne(src[i], factor);
}

template <int (*convertOne)(float, float)>
void scaleToShort(unsigned int count, const float* src, short* dst, float factor) {
    for (unsigned int i = 0; i < count; ++i) {
        const int r = convertOne(src[i], factor);
        dst[i] = static_cast<short>(r > 32767 ? 32767 : r < -32768 ? -32768 : r);
    }
}

} // namespace

constexpr IPP::Implementation IPP::kScalarImplementation = [] {
    Implementation table = {};
    table.name = "scalar";
    table.isSupported = [] { return true; };
    table.fill = fill;
    table.charToFloat = widenOrNarrow;
    table.floatToDouble = widenOrNarrow;
    table.doubleToFloat = widenOrNarrow;
    table.shortToFloat = scale;
    table.shortToDouble = scale;
    table.intToFloat = scale;
    table.intToDouble = scale;
    table.floatToShort = scaleToShort<toInt>;
    table.floatToShortRounded = scaleToShort<toIntRounded>;
    table.floatToInt = scaleToInt<toInt>;
    table.floatToIntRounded = scaleToInt<toIntRounded>;
    return table;
}();
