#include <Kelbase/IPP/IPP_kernels.h>

#include <immintrin.h>

// This source is compiled for AVX-512F. The rule of IPP_avx2.cpp for inline functions applies. The
// zero-masked functions give the same instructions as those without a mask, which pass uninitialised
// registers in GCC.

namespace {

struct Vectors {
    static const IPP::Implementation& Narrower() { return IPP::kAvx2Implementation; }

    static __m512d Every(double v) { return _mm512_set1_pd(v); }

    static __m256 Load(const double* src, float) { return _mm512_maskz_cvtpd_ps(0xFF, _mm512_loadu_pd(src)); }
    static __m512d Load(const short* src, double) {
        return _mm512_maskz_cvtepi32_pd(0xFF, _mm256_cvtepi16_epi32(IPP::get(src)));
    }

    template <bool stream>
    static void Put(float* dst, __m256 v) {
        stream ? _mm256_stream_ps(dst, v) : _mm256_storeu_ps(dst, v);
    }
    template <bool stream>
    static void Put(double* dst, __m512d v) {
        stream ? _mm512_stream_pd(dst, v) : _mm512_storeu_pd(dst, v);
    }
};

} // namespace

void IPP::DoubleToFloatByAvx512(unsigned int count, const double* src, float* dst) {
    // The memory is read faster in the smaller registers of AVX2.
    if (count < kStreamingBytes / (sizeof *src + sizeof *dst))
        Convert<Vectors, &Implementation::doubleToFloat>(count, src, dst);
    else
        kAvx2Implementation.doubleToFloat(count, src, dst);
}

void IPP::ShortToDoubleByAvx512(unsigned int count, const short* src, double* dst, double factor) {
    Convert<Vectors, &Implementation::shortToDouble>(count, src, dst, factor);
}
