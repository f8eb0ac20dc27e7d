#pragma once

/// @file
/// The decimal point of formatted and parsed numbers.

/// "." unless a build sets another character before the first number. Then every "." of a formatted
/// floating-point number becomes that character, and the parsers accept it as a decimal separator. While it
/// is ".", formatted numbers keep the decimal point of the process's locale.
extern char g_chDecimalPoint;
