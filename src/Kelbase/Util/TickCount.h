#pragma once

namespace Util {

/// Milliseconds of the wall clock since 2001-01-01 00:00:00 GMT, rounded, their low 32 bits: wraps about
/// every 49.7 days and jumps when the clock is set.
unsigned int GetTickCountMillis();

/// Seconds since 1970-01-01 00:00:00 UTC, their low 32 bits.
int GetTimeSeconds();

/// Seconds of the host's tick counter, for fine timing; only differences mean something. Allocates nothing.
double GetCycleCountSeconds();

/// The processor's frequency in hertz modulo 2^32, as "hw.cpufrequency" tells it; 0.0 where it does not.
double GetCPUCyclesPerSecond();

///@{
/// Marks for a profiler; there is none in this build, and they do nothing.
void TimeMeasureStart(bool);
void TimeMeasureEnd(bool, const char*);
///@}

} // namespace Util
