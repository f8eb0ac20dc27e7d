// Measures a calculation and prints facts about the processor and the process.
#include <Kelbase/Util/PlatformInfo.h>
#include <Kelbase/Util/TickCount.h>

#include <cstdio>

int main() {
    const double start = Util::GetCycleCountSeconds();
    const unsigned int tick = Util::GetTickCountMillis();
    double sum = 0;
    for (int i = 1; i < 100000; ++i) sum += 1.0 / i;
    // The count wraps every 49.7 days. The unsigned difference is right across a wrap.
    const unsigned int millis = Util::GetTickCountMillis() - tick;
    const double seconds = Util::GetCycleCountSeconds() - start;

    std::printf("the sum is %.3f\n", sum);
    std::printf("%s\n", seconds > 0 && seconds < 60 && millis < 60000 ? "it took a moment"
                                                                      : "the clock was set");
    std::printf("%s\n",
                Util::GetNumLogicalProcessors() >= 1 ? "on one processor or more" : "nowhere");
    std::printf("in a program called %s\n", Util::GetCurrentProcessName().Latin1());
    std::printf("%s\n", Util::GetTimeSeconds() > 1700000000 ? "after November 2023"
                                                            : "on a machine without a clock");
}
