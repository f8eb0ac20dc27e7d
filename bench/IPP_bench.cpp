// The vector routines in each form, beside a plain loop of the caller's own and the C and C++ library's
// blocks. Compare the figures of one run: items_per_second are elements.

#include <Kelbase/IPP/IPP_forms.h>
#include <Kelbase/IPP/IPP_util.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

using IPP::Form;

void sizes(benchmark::internal::Benchmark* bench) {
    for (int size : {64, 1000, 16000, 16 << 20}) bench->Arg(size); // tiny, first and second cache, memory
}

/// Times `run(count, source, destination)`.
template <typename Source, typename Target, typename Run>
void measure(const std::string& name, Run run) {
    const auto body = [run](benchmark::State& state) {
        const unsigned int count = static_cast<unsigned int>(state.range(0));
        std::vector<Source> source(count, Source(3));
        std::vector<Target> target(count);
        for (auto _ : state) {
            run(count, source.data(), target.data());
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * state.range(0));
    };
    benchmark::RegisterBenchmark(name.c_str(), body)->Apply(sizes);
}

/// A conversion by every form of this processor, by the public routine, and by `plain` element for element.
template <typename Source, typename Target, typename Public, typename Plain, typename... Factor>
void compare(const std::string& name, void (*Form::*routine)(unsigned int, const Source*, Target*, Factor...),
             Public routineForAll, Plain plain, Factor... factor) {
    for (const Form* const* form = IPP::allForms; *form; ++form) {
        if (!(*form)->isSupported()) continue;
        const auto run = [f = (*form)->*routine, factor...](unsigned int n, const Source* s, Target* d) {
            f(n, s, d, factor...);
        };
        measure<Source, Target>(name + "/" + (*form)->name, run);
    }
    measure<Source, Target>(name + "/Convert", routineForAll);
    measure<Source, Target>(name + "/plain loop", [plain](unsigned int n, const Source* s, Target* d) {
        for (unsigned int i = 0; i < n; ++i) d[i] = plain(s[i]);
    });
}

short roundToShort(float x) {
    const float sum = x * 32768.0f + (x >= 0 ? 0.5f : -0.5f);
    return static_cast<short>(std::clamp(sum, -32768.0f, 32767.0f));
}

void registerConversions() {
    compare(
        "floatToShortRounded", &Form::floatToShortRounded,
        [](unsigned int n, const float* s, short* d) { IPP::Convert(n, s, d, -15, true); }, roundToShort,
        32768.0f);
    compare(
        "floatToInt", &Form::floatToInt,
        [](unsigned int n, const float* s, int* d) { IPP::Convert(n, s, d, 0, false); },
        [](float x) { return static_cast<int>(x); }, 1.0f);
    compare(
        "shortToFloat", &Form::shortToFloat,
        [](unsigned int n, const short* s, float* d) { IPP::Convert(n, s, d, 15); },
        [](short x) { return static_cast<float>(x) / 32768; }, 1.0f / 32768);
    compare(
        "intToDouble", &Form::intToDouble,
        [](unsigned int n, const int* s, double* d) { IPP::Convert(n, s, d, 31); },
        [](int x) { return x / 2147483648.0; }, 1 / 2147483648.0);
    compare(
        "charToFloat", &Form::charToFloat,
        [](unsigned int n, const unsigned char* s, float* d) { IPP::Convert(n, s, d); },
        [](unsigned char x) { return static_cast<float>(x); });
    compare(
        "doubleToFloat", &Form::doubleToFloat,
        [](unsigned int n, const double* s, float* d) { IPP::Convert(n, s, d); },
        [](double x) { return static_cast<float>(x); });
}

void registerBlocks() {
    measure<float, float>("setFloat/Set",
                          [](unsigned int n, const float*, float* d) { IPP::Set(n, d, 1.5f); });
    measure<float, float>("setFloat/std::fill",
                          [](unsigned int n, const float*, float* d) { std::fill(d, d + n, 1.5f); });
    measure<short, short>("setShort/Set",
                          [](unsigned int n, const short*, short* d) { IPP::Set(n, d, short(7)); });
    measure<short, short>("setShort/std::fill",
                          [](unsigned int n, const short*, short* d) { std::fill(d, d + n, short(7)); });
    measure<float, float>("copyFloat/Copy",
                          [](unsigned int n, const float* s, float* d) { IPP::Copy(n, s, d); });
    measure<float, float>("copyFloat/memcpy",
                          [](unsigned int n, const float* s, float* d) { std::memcpy(d, s, n * 4); });
}

[[maybe_unused]] const bool registered = (registerConversions(), registerBlocks(), true);

} // namespace
