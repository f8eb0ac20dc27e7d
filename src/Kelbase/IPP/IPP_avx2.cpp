#include <Kelbase/IPP/IPP_kernels.h>

#include <immintrin.h>

// This source is compiled for AVX2 and FMA. It must not use inline functions of other headers, because the
// linker could use their AVX2 code in the whole program.

namespace {

struct Vectors {
    static const IPP::Implementation& Narrower() { return IPP::kSse2Implementation; }

    static __m256 Every(float v) { return _mm256_set1_ps(v); }
    static __m256d Every(double v) { return _mm256_set1_pd(v); }
    static __m256i Every(long long v) { return _mm256_set1_epi64x(v); }

    static __m256 Load(const float* src, float) { return _mm256_loadu_ps(src); }
    static __m256 Load(const int* src, float) {
        return _mm256_cvtepi32_ps(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(src)));
    }
    static __m256 Load(const short* src, float) {
        return _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(IPP::get(src)));
    }
    static __m256 Load(const unsigned char* src, float) {
        return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(IPP::getHalf(src)));
    }
    static __m256 Load(const double* src, float) {
        const __m128 low = _mm256_cvtpd_ps(_mm256_loadu_pd(src));
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), _mm256_cvtpd_ps(_mm256_loadu_pd(src + 4)),
                                    1);
    }
    static __m256d Load(const float* src, double) { return _mm256_cvtps_pd(_mm_loadu_ps(src)); }
    static __m256d Load(const int* src, double) { return _mm256_cvtepi32_pd(IPP::get(src)); }
    static __m256d Load(const short* src, double) {
        return _mm256_cvtepi32_pd(_mm_cvtepi16_epi32(IPP::getHalf(src)));
    }

    static __m256 SignedHalf(__m256 x) { return _mm256_or_ps(_mm256_and_ps(x, Every(-0.0f)), Every(0.5f)); }
    static __m256 MultiplyAdd(__m256 x, __m256 y, __m256 z) { return _mm256_fmadd_ps(x, y, z); }
    static __m256i Truncate(__m256 v) { return _mm256_cvttps_epi32(v); }
    static __m256i Pack(__m256i low, __m256i high) {
        const __m256i packed = _mm256_packs_epi32(low, high); // packs within each lane
        return _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0));
    }

    template <bool stream, typename Register>
    static void Put(void* dst, Register v) {
        __m256i* const p = static_cast<__m256i*>(dst);
        stream ? _mm256_stream_si256(p, __m256i(v)) : _mm256_storeu_si256(p, __m256i(v));
    }
};

} // namespace

constexpr IPP::Implementation IPP::kAvx2Implementation = MakeImplementation<Vectors>("avx2", HasAvx2);

// The other conversions are limited by their stores, and AVX2 stores as many bytes in a cycle as AVX-512.
constexpr IPP::Implementation IPP::kAvx512Implementation = [] {
    Implementation table = kAvx2Implementation;
    table.name = "avx512";
    table.isSupported = HasAvx512;
    table.doubleToFloat = DoubleToFloatByAvx512;
    table.shortToDouble = ShortToDoubleByAvx512;
    return table;
}();
