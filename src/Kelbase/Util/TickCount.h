#pragma once

/// @file
/// Clocks.

namespace Util {

/// Returns the low 32 bits of the milliseconds of the wall clock since 2001-01-01 00:00:00 GMT, rounded. The
/// count wraps about every 49.7 days and jumps when the clock is set.
unsigned int GetTickCountMillis();

/// Returns the low 32 bits of the seconds since 1970-01-01 00:00:00 UTC.
int GetTimeSeconds();

/// Returns the host's tick counter in seconds, for fine timing. Only differences are meaningful. Allocates
/// nothing.
double GetCycleCountSeconds();

/// Returns the processor's frequency "hw.cpufrequency" in hertz, modulo 2^32. Returns 0.0 if the system does
/// not report it.
double GetCPUCyclesPerSecond();

///@{
/// Marks for a profiler. They do nothing in this build.
void TimeMeasureStart(bool);
void TimeMeasureEnd(bool, const char*);
///@}

} // namespace Util
