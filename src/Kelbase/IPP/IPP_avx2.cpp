#include <Kelbase/IPP/IPP_implementations.h>

#include <Kelbase/IPP/IPP_blocks.h>

#include <cpuid.h>
#include <immintrin.h>

// This source is compiled for AVX2 and FMA. Callers must not call another function of this source before
// isSupported has returned true. The source must not use inline functions of other headers, because the
// linker could use their AVX2 code in the whole program.

namespace {

/// Returns a bit for each register set that the operating system saves: bit 1 for SSE, bit 2 for AVX.
unsigned int savedRegisters() {
    unsigned int low, high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

bool isSupported() {
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

template <bool stream>
void put(float* dst, __m256 v) {
    stream ? _mm256_stream_ps(dst, v) : _mm256_storeu_ps(dst, v);
}

template <bool stream>
void put(double* dst, __m256d v) {
    stream ? _mm256_stream_pd(dst, v) : _mm256_storeu_pd(dst, v);
}

template <bool stream, typename Integer>
void put(Integer* dst, __m256i v) {
    __m256i* p = reinterpret_cast<__m256i*>(dst);
    stream ? _mm256_stream_si256(p, v) : _mm256_storeu_si256(p, v);
}

/// `getQuarter`, `getHalf` and `get` load 8, 16 and 32 bytes. The address needs no alignment.
template <typename Integer>
__m128i getQuarter(const Integer* src) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src));
}

template <typename Integer>
__m128i getHalf(const Integer* src) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
}

template <typename Integer>
__m256i get(const Integer* src) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
}

struct CharToFloat {
    using Source = unsigned char;
    using Target = float;
    static constexpr unsigned int kCount = 8;

    template <bool stream>
    void Convert(const unsigned char* src, float* dst) const {
        put<stream>(dst, _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(getQuarter(src))));
    }
};

struct FloatToDouble {
    using Source = float;
    using Target = double;
    static constexpr unsigned int kCount = 4;

    template <bool stream>
    void Convert(const float* src, double* dst) const {
        put<stream>(dst, _mm256_cvtps_pd(_mm_loadu_ps(src)));
    }
};

struct DoubleToFloat {
    using Source = double;
    using Target = float;
    static constexpr unsigned int kCount = 8;

    template <bool stream>
    void Convert(const double* src, float* dst) const {
        const __m128 low = _mm256_cvtpd_ps(_mm256_loadu_pd(src));
        const __m128 high = _mm256_cvtpd_ps(_mm256_loadu_pd(src + 4));
        put<stream>(dst, _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1));
    }
};

struct ShortToFloat {
    using Source = short;
    using Target = float;
    static constexpr unsigned int kCount = 8;
    __m256 factor;

    explicit ShortToFloat(float f) : factor(_mm256_set1_ps(f)) {}

    template <bool stream>
    void Convert(const short* src, float* dst) const {
        const __m256i ints = _mm256_cvtepi16_epi32(getHalf(src));
        put<stream>(dst, _mm256_mul_ps(_mm256_cvtepi32_ps(ints), factor));
    }
};

struct ShortToDouble {
    using Source = short;
    using Target = double;
    static constexpr unsigned int kCount = 4;
    __m256d factor;

    explicit ShortToDouble(double f) : factor(_mm256_set1_pd(f)) {}

    template <bool stream>
    void Convert(const short* src, double* dst) const {
        const __m128i ints = _mm_cvtepi16_epi32(getQuarter(src));
        put<stream>(dst, _mm256_mul_pd(_mm256_cvtepi32_pd(ints), factor));
    }
};

struct IntToFloat {
    using Source = int;
    using Target = float;
    static constexpr unsigned int kCount = 8;
    __m256 factor;

    explicit IntToFloat(float f) : factor(_mm256_set1_ps(f)) {}

    template <bool stream>
    void Convert(const int* src, float* dst) const {
        put<stream>(dst, _mm256_mul_ps(_mm256_cvtepi32_ps(get(src)), factor));
    }
};

struct IntToDouble {
    using Source = int;
    using Target = double;
    static constexpr unsigned int kCount = 4;
    __m256d factor;

    explicit IntToDouble(double f) : factor(_mm256_set1_pd(f)) {}

    template <bool stream>
    void Convert(const int* src, double* dst) const {
        put<stream>(dst, _mm256_mul_pd(_mm256_cvtepi32_pd(getHalf(src)), factor));
    }
};

/// Scales eight floats and converts them to integers. The result is the smallest int for NaN and for values
/// out of range.
///
/// The multiplication and the addition may be fused, although the scalar implementation rounds the product.
/// The factor is a power of two, 0 or infinity. There are three cases. The product is exact. Or the product
/// overflows, and the sum overflows too. Or the product is smaller than a normal number, and its rounding
/// error does not change the sum with 0.5.
template <bool round>
struct ToInts {
    __m256 factor;

    explicit ToInts(float f) : factor(_mm256_set1_ps(f)) {}

    __m256i operator()(const float* src) const {
        const __m256 x = _mm256_loadu_ps(src);
        if (!round) return _mm256_cvttps_epi32(_mm256_mul_ps(x, factor));
        // For -0.0 the scalar implementation adds +0.5 and this one adds -0.5. Both sums are truncated to 0.
        const __m256 sign = _mm256_and_ps(x, _mm256_set1_ps(-0.0f));
        return _mm256_cvttps_epi32(_mm256_fmadd_ps(x, factor, _mm256_or_ps(sign, _mm256_set1_ps(0.5f))));
    }
};

template <bool round>
struct FloatToShort : ToInts<round> {
    using Source = float;
    using Target = short;
    static constexpr unsigned int kCount = 16;
    using ToInts<round>::ToInts;

    template <bool stream>
    void Convert(const float* src, short* dst) const {
        const __m256i packed = _mm256_packs_epi32((*this)(src), (*this)(src + 8)); // packs within each lane
        put<stream>(dst, _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0)));
    }
};

template <bool round>
struct FloatToInt : ToInts<round> {
    using Source = float;
    using Target = int;
    static constexpr unsigned int kCount = 8;
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
        (IPP::kSse2Implementation.*routine)(count, src, dst, factor...);
    else
        IPP::ConvertArray<32>(count, src, dst, Block(factor...));
}

void fill(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    if (bytes < 32) {
        IPP::kSse2Implementation.fill(bytes, dst, pattern);
        return;
    }
    if (bytes >= IPP::kStringFillBytes && IPP::FillByString(bytes, dst, pattern)) return;
    const __m256i v = _mm256_broadcastq_epi64(getQuarter(pattern));
    const std::size_t last = bytes - 32;
    for (std::size_t i = 0; i < last; i += 32) put<false>(dst + i, v);
    put<false>(dst + last, v); // `last` is a multiple of the element size: the pattern continues
}

} // namespace

const IPP::Implementation IPP::kAvx2Implementation = {
    "avx2",
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
