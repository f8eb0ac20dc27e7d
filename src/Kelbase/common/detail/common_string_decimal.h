#pragma once

/// @file
/// How numbers are written.

/// The decimal point of the numbers that `String` writes and reads: ".". A build that wants another one sets
/// it before the first number.
extern char g_chDecimalPoint;
