#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace xcodhost {

/// When a child has run for too long: a clock for the call that it is in and one for the whole run.
class Deadlines {
public:
    using Clock = std::chrono::steady_clock;

    Deadlines(double secondsPerCall, double secondsPerRun)
        : callSeconds(secondsPerCall),
          runSeconds(secondsPerRun),
          call(Clock::now() + Span(secondsPerCall)),
          run(Clock::now() + Span(secondsPerRun)) {}

    void CallBegins() { call = Clock::now() + Span(callSeconds); }
    /// Both clocks stood still for so long.
    void Hold(Clock::duration duration) {
        call += duration;
        run += duration;
    }
    bool HavePassed() const { return Clock::now() >= Next(); }
    double PassedLimit() const { return call <= run ? callSeconds : runSeconds; }
    /// For poll: never 0 before a deadline has passed.
    int Milliseconds() const {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(Next() - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
    }

private:
    Clock::time_point Next() const { return std::min(call, run); }
    static Clock::duration Span(double seconds) {
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    }

    double callSeconds;
    double runSeconds;
    Clock::time_point call;
    Clock::time_point run;
};

} // namespace xcodhost
