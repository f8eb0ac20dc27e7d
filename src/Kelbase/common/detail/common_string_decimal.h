#pragma once

/// @file
/// Declares the setting for the decimal point of formatted and parsed numbers.

/// The decimal point of formatted numbers. The default is ".": formatted numbers then have the decimal point
/// of the process's locale. A program may set another character before it formats or parses the first number.
/// Every "." of a formatted floating-point number then becomes that character. The parsers then also accept
/// that character as a decimal separator.
extern char g_chDecimalPoint;
