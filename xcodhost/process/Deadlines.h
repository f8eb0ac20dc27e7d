#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace xcodhost {

/// The time limits of a child: one for the current call, and one for all calls together.
class Deadlines {
public:
    using Clock = std::chrono::steady_clock;

    Deadlines(double secondsPerCall, double secondsPerRun)
        : callSeconds(secondsPerCall),
          runSeconds(secondsPerRun),
          call(Clock::now() + Span(secondsPerCall)),
          run(Clock::now() + Span(secondsPerRun)) {}

    /// Starts the time limit of a new call.
    void CallBegins() { call = Clock::now() + Span(callSeconds); }
    /// Extends both time limits by this duration.
    void Hold(Clock::duration duration) {
        call += duration;
        run += duration;
    }
    bool HavePassed() const { return Clock::now() >= Next(); }
    /// Returns the length of the time limit that ends first, in seconds.
    double PassedLimit() const { return call <= run ? callSeconds : runSeconds; }
    /// Returns the time until the next deadline in milliseconds, as a timeout for poll. The result is at most
    /// 60,000. The result is 0 only at or after the deadline.
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
