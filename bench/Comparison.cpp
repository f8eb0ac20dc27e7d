#include "Comparison.h"

#include <cstdio>

namespace comparison {

std::string Show(double v) {
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%.17g", v));
    return text;
}

void Comparison::Register(const std::string& implementation, const std::string& result,
                          std::function<void(benchmark::State&)> run) {
    if (!hasExpected) expected = result;
    hasExpected = true;
    const char* const label = result == expected ? "" : "differs";
    const auto body = [run = std::move(run), label, each = items](benchmark::State& state) {
        run(state);
        state.SetLabel(label);
        state.counters["items"] = each;
    };
    benchmark::RegisterBenchmark((job + "/" + implementation).c_str(), body);
}

} // namespace comparison
