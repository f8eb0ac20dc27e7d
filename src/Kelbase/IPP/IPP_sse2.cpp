#include <Kelbase/IPP/IPP_kernels.h>

namespace {

struct Vectors {
    static const IPP::Implementation& Narrower() { return IPP::kScalarImplementation; }

    static __m128 Every(float v) { return _mm_set1_ps(v); }
    static __m128d Every(double v) { return _mm_set1_pd(v); }
    static __m128i Every(long long v) { return _mm_set1_epi64x(v); }

    /// Two registers of integers that are multiplied by `unit`. SSE2 has no sign-extending conversion: a
    /// short that is unpacked into the upper half of an int is multiplied by 65536. Dividing the factor by
    /// 65536 is exact, because the factors are at least 2^-31.
    template <typename Target, int unit = 1>
    struct Pair {
        decltype(Every(Target())) low, high;

        Pair operator*(decltype(low) factor) const {
            const decltype(low) scaled = factor * Every(Target(1) / unit);
            return {low * scaled, high * scaled};
        }
    };

    static __m128 Load(const float* src, float) { return _mm_loadu_ps(src); }
    static __m128 Load(const int* src, float) { return _mm_cvtepi32_ps(IPP::get(src)); }
    static Pair<float, 65536> Load(const short* src, float) {
        const __m128i zero = _mm_setzero_si128(), v = IPP::get(src);
        return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(zero, v)), _mm_cvtepi32_ps(_mm_unpackhi_epi16(zero, v))};
    }
    static Pair<float> Load(const unsigned char* src, float) {
        const __m128i zero = _mm_setzero_si128(), v = _mm_unpacklo_epi8(IPP::getHalf(src), zero);
        return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(v, zero)), _mm_cvtepi32_ps(_mm_unpackhi_epi16(v, zero))};
    }
    static __m128 Load(const double* src, float) {
        return _mm_movelh_ps(_mm_cvtpd_ps(_mm_loadu_pd(src)), _mm_cvtpd_ps(_mm_loadu_pd(src + 2)));
    }
    static __m128d Load(const float* src, double) {
        return _mm_cvtps_pd(_mm_castsi128_ps(IPP::getHalf(src)));
    }
    static Pair<double> Load(const int* src, double) {
        const __m128i v = IPP::get(src);
        return {_mm_cvtepi32_pd(v), _mm_cvtepi32_pd(_mm_unpackhi_epi64(v, v))};
    }
    static Pair<double, 65536> Load(const short* src, double) {
        const __m128i v = _mm_unpacklo_epi16(_mm_setzero_si128(), IPP::getHalf(src));
        return {_mm_cvtepi32_pd(v), _mm_cvtepi32_pd(_mm_unpackhi_epi64(v, v))};
    }

    static __m128 SignedHalf(__m128 x) { return _mm_or_ps(_mm_and_ps(x, Every(-0.0f)), Every(0.5f)); }
    static __m128 MultiplyAdd(__m128 x, __m128 y, __m128 z) { return x * y + z; }
    static __m128i Truncate(__m128 v) { return _mm_cvttps_epi32(v); }
    static __m128i Pack(__m128i low, __m128i high) { return _mm_packs_epi32(low, high); }

    template <bool stream, typename Register>
    static void Put(void* dst, Register v) {
        __m128i* const p = static_cast<__m128i*>(dst);
        stream ? _mm_stream_si128(p, __m128i(v)) : _mm_storeu_si128(p, __m128i(v));
    }
    template <bool stream, typename Target, int unit>
    static void Put(Target* dst, Pair<Target, unit> v) {
        Put<stream>(dst, v.low);
        Put<stream>(dst + sizeof(__m128) / sizeof(Target), v.high);
    }
};

} // namespace

constexpr IPP::Implementation IPP::kSse2Implementation = MakeImplementation<Vectors>("sse2", HasSse2);
