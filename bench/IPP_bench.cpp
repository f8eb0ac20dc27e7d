// Benchmarks of the vector routines at four sizes, and at one size misaligned. The peers are a vector library
// for signal processing and the user's own loops. All implementations use the same two blocks of memory as
// source and target.

#include <Kelbase/IPP/IPP_implementations.h>
#include <Kelbase/IPP/IPP_util.h>

#include "Comparison.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <sys/mman.h>

#ifdef BENCH_VOLK
#include <volk/volk.h>
#endif

namespace {

using comparison::Comparison;

constexpr unsigned int kLargestCount = 16u << 20;

/// Returns memory for the largest array of the widest type, `offset` bytes after the start of a page. The two
/// arrays need different offsets: with equal offsets, a processor treats a store as a dependency of the next
/// loads. The system allocates a page at its first access.
unsigned char* newBlock(std::size_t offset) {
    void* const block = mmap(nullptr, std::size_t{kLargestCount} * 8 + 8192, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return block == MAP_FAILED ? nullptr : static_cast<unsigned char*>(block) + offset;
}
unsigned char* const kSourceBlock = newBlock(0);
unsigned char* const kTargetBlock = newBlock(4032);

struct Size {
    const char* name;
    unsigned int count;
    bool misaligned;
};
constexpr Size kSizes[] = {{"tiny", 64, false},
                           {"L1", 1000, false},
                           {"L2", 16000, false},
                           {"L2u", 16000, true},
                           {"DRAM", kLargestCount, false}};

/// Fills the source with positive and negative numbers up to `scale`,
/// none of them halfway between two integers.
template <typename Source>
void fillSource(Source* source, unsigned int count, double scale) {
    for (unsigned int i = 0; i < count; ++i)
        source[i] = static_cast<Source>((static_cast<int>(i * 2654435761u >> 16) - 32768) / 32768.0 * scale);
}

/// A job at every size. Each implementation is a function `run(count, source, target)`.
template <typename Source, typename Target>
class Conversion {
public:
    Conversion(std::string name, double sourceScale) : job(std::move(name)), scale(sourceScale) {}

    template <typename Run>
    Conversion& Add(const char* implementation, Run run) {
        for (const Size& size : kSizes) {
            Comparison& comparison = At(size);
            // A misaligned array begins one element after the alignment
            // boundary that the platform guarantees.
            Source* const source = reinterpret_cast<Source*>(kSourceBlock) + size.misaligned;
            Target* const target = reinterpret_cast<Target*>(kTargetBlock) + size.misaligned;
            comparison.Add(
                implementation, [run, size, source, target] { run(size.count, source, target); },
                [thisScale = scale, size, source] { fillSource(source, size.count, thisScale); },
                [size, target] {
                    return std::string(reinterpret_cast<const char*>(target),
                                       std::min(size.count, 1000u) * sizeof(Target));
                });
        }
        return *this;
    }

private:
    Comparison& At(const Size& size) {
        const std::size_t index = static_cast<std::size_t>(&size - kSizes);
        if (comparisons.size() <= index) comparisons.emplace_back(job + "_" + size.name, size.count);
        return comparisons[index];
    }

    std::string job;
    double scale;
    std::vector<Comparison> comparisons;
};

/// A plain loop that the compiler vectorises because of the option -O3.
template <typename Source, typename Target, typename Each>
__attribute__((optimize("O3"))) void loopO3(unsigned int n, const Source* __restrict s, Target* __restrict d,
                                            Each each) {
    for (unsigned int i = 0; i < n; ++i) d[i] = each(s[i]);
}

/// Returns the implementation of a routine that uses only SSE2 instructions.
template <typename Source, typename Target, typename... Factor>
auto withSse2(void (*IPP::Implementation::*routine)(unsigned int, const Source*, Target*, Factor...),
              Factor... factor) {
    return [f = IPP::kSse2Implementation.*routine, factor...](unsigned int n, const Source* s, Target* d) {
        f(n, s, d, factor...);
    };
}

void enterFromFloat() {
    Conversion<float, short>("f32_s16_round", 1.2)
        .Add("ours", [](unsigned int n, const float* s, short* d) { IPP::Convert(n, s, d, -15, true); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::floatToShortRounded, 32768.0f))
#ifdef BENCH_VOLK
        .Add("VOLK",
             [](unsigned int n, const float* s, short* d) { volk_32f_s32f_convert_16i(d, s, 32768, n); })
        .Add("VOLK-sse", [](unsigned int n, const float* s,
                            short* d) { volk_32f_s32f_convert_16i_manual(d, s, 32768, n, "u_sse2"); })
#endif
        ;
    Conversion<float, short>("f32_s16_trunc", 1.2)
        .Add("ours", [](unsigned int n, const float* s, short* d) { IPP::Convert(n, s, d, -15, false); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::floatToShort, 32768.0f))
#ifdef BENCH_VOLK
        .Add("VOLK",
             [](unsigned int n, const float* s, short* d) { volk_32f_s32f_convert_16i(d, s, 32768, n); })
        .Add("VOLK-sse", [](unsigned int n, const float* s,
                            short* d) { volk_32f_s32f_convert_16i_manual(d, s, 32768, n, "u_sse2"); })
#endif
        ;
    Conversion<float, int>("f32_s32_trunc", 1e6)
        .Add("ours", [](unsigned int n, const float* s, int* d) { IPP::Convert(n, s, d, 0, false); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::floatToInt, 1.0f))
#ifdef BENCH_VOLK
        .Add("VOLK", [](unsigned int n, const float* s, int* d) { volk_32f_s32f_convert_32i(d, s, 1, n); })
        .Add("VOLK-sse", [](unsigned int n, const float* s,
                            int* d) { volk_32f_s32f_convert_32i_manual(d, s, 1, n, "u_sse2"); })
#endif
        ;
    Conversion<float, int>("f32_s32_scaled_round", 0.9)
        .Add("ours", [](unsigned int n, const float* s, int* d) { IPP::Convert(n, s, d, -31, true); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::floatToIntRounded, 2147483648.0f))
#ifdef BENCH_VOLK
        .Add("VOLK", [](unsigned int n, const float* s,
                        int* d) { volk_32f_s32f_convert_32i(d, s, 2147483648.0f, n); })
        .Add("VOLK-sse", [](unsigned int n, const float* s,
                            int* d) { volk_32f_s32f_convert_32i_manual(d, s, 2147483648.0f, n, "u_sse2"); })
#endif
        ;
    Conversion<float, double>("f32_f64", 1)
        .Add("ours", [](unsigned int n, const float* s, double* d) { IPP::Convert(n, s, d); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::floatToDouble))
#ifdef BENCH_VOLK
        .Add("VOLK", [](unsigned int n, const float* s, double* d) { volk_32f_convert_64f(d, s, n); })
        .Add("VOLK-sse", [](unsigned int n, const float* s,
                            double* d) { volk_32f_convert_64f_manual(d, s, n, "u_sse2"); })
#endif
        ;
}

void enterToFloat() {
    Conversion<short, float>("s16_f32", 32767)
        .Add("ours", [](unsigned int n, const short* s, float* d) { IPP::Convert(n, s, d, 15); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::shortToFloat, 1.0f / 32768))
#ifdef BENCH_VOLK
        .Add("VOLK",
             [](unsigned int n, const short* s, float* d) { volk_16i_s32f_convert_32f(d, s, 32768, n); })
        .Add("VOLK-sse", [](unsigned int n, const short* s,
                            float* d) { volk_16i_s32f_convert_32f_manual(d, s, 32768, n, "u_sse4_1"); })
#endif
        ;
    Conversion<int, float>("s32_f32", 2147483647)
        .Add("ours", [](unsigned int n, const int* s, float* d) { IPP::Convert(n, s, d, 31); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::intToFloat, 1.0f / 2147483648.0f))
#ifdef BENCH_VOLK
        .Add("VOLK", [](unsigned int n, const int* s,
                        float* d) { volk_32i_s32f_convert_32f(d, s, 2147483648.0f, n); })
        .Add("VOLK-sse", [](unsigned int n, const int* s,
                            float* d) { volk_32i_s32f_convert_32f_manual(d, s, 2147483648.0f, n, "u_sse2"); })
#endif
        ;
    Conversion<unsigned char, float>("u8_f32", 127)
        .Add("ours", [](unsigned int n, const unsigned char* s, float* d) { IPP::Convert(n, s, d); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::charToFloat))
#ifdef BENCH_VOLK
        .Add("VOLK",
             [](unsigned int n, const unsigned char* s, float* d) {
                 volk_8i_s32f_convert_32f(d, reinterpret_cast<const std::int8_t*>(s), 1, n);
             })
        .Add("VOLK-sse",
             [](unsigned int n, const unsigned char* s, float* d) {
                 volk_8i_s32f_convert_32f_manual(d, reinterpret_cast<const std::int8_t*>(s), 1, n,
                                                 "u_sse4_1");
             })
#endif
        ;
    Conversion<double, float>("f64_f32", 1)
        .Add("ours", [](unsigned int n, const double* s, float* d) { IPP::Convert(n, s, d); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::doubleToFloat))
#ifdef BENCH_VOLK
        .Add("VOLK", [](unsigned int n, const double* s, float* d) { volk_64f_convert_32f(d, s, n); })
        .Add("VOLK-sse", [](unsigned int n, const double* s,
                            float* d) { volk_64f_convert_32f_manual(d, s, n, "u_sse2"); })
#endif
        ;
}

void enterToDouble() {
    Conversion<short, double>("s16_f64", 32767)
        .Add("ours", [](unsigned int n, const short* s, double* d) { IPP::Convert(n, s, d, 15); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::shortToDouble, 1.0 / 32768))
        .Add("O3-loop", [](unsigned int n, const short* s, double* d) {
            loopO3(n, s, d, [](short v) { return v * (1.0 / 32768); });
        });
    Conversion<int, double>("s32_f64", 2147483647)
        .Add("ours", [](unsigned int n, const int* s, double* d) { IPP::Convert(n, s, d, 31); })
        .Add("ours-sse2", withSse2(&IPP::Implementation::intToDouble, 1.0 / 2147483648.0))
        .Add("O3-loop", [](unsigned int n, const int* s, double* d) {
            loopO3(n, s, d, [](int v) { return v * (1.0 / 2147483648.0); });
        });
}

template <typename Element>
void enterSet(const char* job, Element value) {
    Conversion<Element, Element>(job, 1)
        .Add("ours", [value](unsigned int n, const Element*, Element* d) { IPP::Set(n, d, value); })
        .Add("std::fill", [value](unsigned int n, const Element*, Element* d) { std::fill(d, d + n, value); })
        .Add("O3-loop", [value](unsigned int n, const Element* s, Element* d) {
            loopO3(n, s, d, [value](Element) { return value; });
        });
}

/// Compares two arrays of zeros.
void enterEqual() {
    for (const Size& size : kSizes) {
        const auto prepare = [n = size.count] {
            std::memset(kSourceBlock, 0, n), std::memset(kTargetBlock, 0, n);
        };
        const auto inspect = [] { return std::string(); };
        Comparison(std::string("equal_u8_") + size.name, size.count)
            .Add(
                "ours",
                [n = size.count] { benchmark::DoNotOptimize(IPP::Equal(n, kSourceBlock, kTargetBlock)); },
                prepare, inspect)
            .Add(
                "memcmp",
                [n = size.count] {
                    benchmark::DoNotOptimize(std::memcmp(kSourceBlock, kTargetBlock, n) == 0);
                },
                prepare, inspect);
    }
}

void enterBlocks() {
    enterSet("set_f32", 1.5f);
    enterSet("set_s16", short{7});
    Conversion<float, float>("copy_f32", 1)
        .Add("ours", [](unsigned int n, const float* s, float* d) { IPP::Copy(n, s, d); })
        .Add("memcpy", [](unsigned int n, const float* s, float* d) { std::memcpy(d, s, n * sizeof *s); });
    Conversion<float, float>("zero_f32", 1)
        .Add("ours", [](unsigned int n, const float*, float* d) { IPP::Zero(n, d); })
        .Add("memset", [](unsigned int n, const float*, float* d) { std::memset(d, 0, n * sizeof *d); });
    enterEqual();
}

[[maybe_unused]] const bool kRegistered =
    (enterFromFloat(), enterToFloat(), enterToDouble(), enterBlocks(), true);

} // namespace
