#include <Kelbase/IPP/IPP_implementations.h>

#include <Kelbase/IPP/IPP_blocks.h>

#include <cpuid.h>
#include <emmintrin.h>

namespace {

bool isSupported() {
    unsigned int eax, ebx, ecx, edx;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) && (edx & bit_SSE2);
}

template <bool stream>
void put(float* dst, __m128 v) {
    stream ? _mm_stream_ps(dst, v) : _mm_storeu_ps(dst, v);
}

template <bool stream>
void put(double* dst, __m128d v) {
    stream ? _mm_stream_pd(dst, v) : _mm_storeu_pd(dst, v);
}

template <bool stream, typename Integer>
void put(Integer* dst, __m128i v) {
    __m128i* p = reinterpret_cast<__m128i*>(dst);
    stream ? _mm_stream_si128(p, v) : _mm_storeu_si128(p, v);
}

template <typename Integer>
__m128i get(const Integer* src) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
}

/// Loads eight bytes. The upper half is 0.
template <typename Integer>
__m128i getHalf(const Integer* src) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src));
}

__m128i upperHalf(__m128i v) { return _mm_unpackhi_epi64(v, v); }

struct CharToFloat {
    using Source = unsigned char;
    using Target = float;
    static constexpr unsigned int kCount = 8;

    template <bool stream>
    void Convert(const unsigned char* src, float* dst) const {
        const __m128i zero = _mm_setzero_si128();
        const __m128i shorts = _mm_unpacklo_epi8(getHalf(src), zero);
        put<stream>(dst, _mm_cvtepi32_ps(_mm_unpacklo_epi16(shorts, zero)));
        put<stream>(dst + 4, _mm_cvtepi32_ps(_mm_unpackhi_epi16(shorts, zero)));
    }
};

struct FloatToDouble {
    using Source = float;
    using Target = double;
    static constexpr unsigned int kCount = 4;

    template <bool stream>
    void Convert(const float* src, double* dst) const {
        const __m128 v = _mm_loadu_ps(src);
        put<stream>(dst, _mm_cvtps_pd(v));
        put<stream>(dst + 2, _mm_cvtps_pd(_mm_movehl_ps(v, v)));
    }
};

struct DoubleToFloat {
    using Source = double;
    using Target = float;
    static constexpr unsigned int kCount = 4;

    template <bool stream>
    void Convert(const double* src, float* dst) const {
        const __m128 low = _mm_cvtpd_ps(_mm_loadu_pd(src));
        const __m128 high = _mm_cvtpd_ps(_mm_loadu_pd(src + 2));
        put<stream>(dst, _mm_movelh_ps(low, high));
    }
};

// SSE2 has no sign-extending conversion. A short that is unpacked into the upper half of an int is multiplied
// by 65536. Dividing the factor by 65536 is exact, because the factors are at least 2^-31.

struct ShortToFloat {
    using Source = short;
    using Target = float;
    static constexpr unsigned int kCount = 8;
    __m128 factor;

    explicit ShortToFloat(float f) : factor(_mm_set1_ps(f / 65536)) {}

    template <bool stream>
    void Convert(const short* src, float* dst) const {
        const __m128i zero = _mm_setzero_si128(), v = get(src);
        put<stream>(dst, _mm_mul_ps(_mm_cvtepi32_ps(_mm_unpacklo_epi16(zero, v)), factor));
        put<stream>(dst + 4, _mm_mul_ps(_mm_cvtepi32_ps(_mm_unpackhi_epi16(zero, v)), factor));
    }
};

struct ShortToDouble {
    using Source = short;
    using Target = double;
    static constexpr unsigned int kCount = 4;
    __m128d factor;

    explicit ShortToDouble(double f) : factor(_mm_set1_pd(f / 65536)) {}

    template <bool stream>
    void Convert(const short* src, double* dst) const {
        const __m128i ints = _mm_unpacklo_epi16(_mm_setzero_si128(), getHalf(src));
        put<stream>(dst, _mm_mul_pd(_mm_cvtepi32_pd(ints), factor));
        put<stream>(dst + 2, _mm_mul_pd(_mm_cvtepi32_pd(upperHalf(ints)), factor));
    }
};

struct IntToFloat {
    using Source = int;
    using Target = float;
    static constexpr unsigned int kCount = 4;
    __m128 factor;

    explicit IntToFloat(float f) : factor(_mm_set1_ps(f)) {}

    template <bool stream>
    void Convert(const int* src, float* dst) const {
        put<stream>(dst, _mm_mul_ps(_mm_cvtepi32_ps(get(src)), factor));
    }
};

struct IntToDouble {
    using Source = int;
    using Target = double;
    static constexpr unsigned int kCount = 4;
    __m128d factor;

    explicit IntToDouble(double f) : factor(_mm_set1_pd(f)) {}

    template <bool stream>
    void Convert(const int* src, double* dst) const {
        const __m128i v = get(src);
        put<stream>(dst, _mm_mul_pd(_mm_cvtepi32_pd(v), factor));
        put<stream>(dst + 2, _mm_mul_pd(_mm_cvtepi32_pd(upperHalf(v)), factor));
    }
};

/// Scales four floats and converts them to integers. Truncation gives the smallest int for NaN and for values
/// out of range.
template <bool round>
struct ToInts {
    __m128 factor;

    explicit ToInts(float f) : factor(_mm_set1_ps(f)) {}

    __m128i operator()(const float* src) const {
        const __m128 x = _mm_loadu_ps(src);
        __m128 product = _mm_mul_ps(x, factor);
        // Adds -0.5 to -0.0, not +0.5. Both are truncated to 0.
        if (round) {
            const __m128 half = _mm_or_ps(_mm_and_ps(x, _mm_set1_ps(-0.0f)), _mm_set1_ps(0.5f));
            product = _mm_add_ps(product, half);
        }
        return _mm_cvttps_epi32(product);
    }
};

template <bool round>
struct FloatToShort : ToInts<round> {
    using Source = float;
    using Target = short;
    static constexpr unsigned int kCount = 8;
    using ToInts<round>::ToInts;

    template <bool stream>
    void Convert(const float* src, short* dst) const {
        put<stream>(dst, _mm_packs_epi32((*this)(src), (*this)(src + 4)));
    }
};

template <bool round>
struct FloatToInt : ToInts<round> {
    using Source = float;
    using Target = int;
    static constexpr unsigned int kCount = 4;
    using ToInts<round>::ToInts;

    template <bool stream>
    void Convert(const float* src, int* dst) const {
        put<stream>(dst, (*this)(src));
    }
};

template <typename Block, auto routine, typename... Factor>
void convert(unsigned int count, const typename Block::Source* src, typename Block::Target* dst,
             Factor... factor) {
    if (count < Block::kCount)
        (IPP::kScalarImplementation.*routine)(count, src, dst, factor...);
    else
        IPP::ConvertArray<16>(count, src, dst, Block(factor...));
}

void fill(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    if (bytes < 16) {
        IPP::kScalarImplementation.fill(bytes, dst, pattern);
        return;
    }
    if (bytes >= IPP::kStringFillBytes && IPP::FillByString(bytes, dst, pattern)) return;
    const __m128i half = getHalf(pattern);
    const __m128i v = _mm_unpacklo_epi64(half, half);
    const std::size_t last = bytes - 16;
    for (std::size_t i = 0; i < last; i += 16) put<false>(dst + i, v);
    put<false>(dst + last, v); // a multiple of the element size from the end, so in phase with the pattern
}

} // namespace

const IPP::Implementation IPP::kSse2Implementation = {
    "sse2",
    isSupported,
    fill,
    convert<CharToFloat, &IPP::Implementation::charToFloat>,
    convert<FloatToDouble, &IPP::Implementation::floatToDouble>,
    convert<DoubleToFloat, &IPP::Implementation::doubleToFloat>,
    convert<ShortToFloat, &IPP::Implementation::shortToFloat>,
    convert<ShortToDouble, &IPP::Implementation::shortToDouble>,
    convert<IntToFloat, &IPP::Implementation::intToFloat>,
    convert<IntToDouble, &IPP::Implementation::intToDouble>,
    convert<FloatToShort<false>, &IPP::Implementation::floatToShort>,
    convert<FloatToShort<true>, &IPP::Implementation::floatToShortRounded>,
    convert<FloatToInt<false>, &IPP::Implementation::floatToInt>,
    convert<FloatToInt<true>, &IPP::Implementation::floatToIntRounded>,
};
