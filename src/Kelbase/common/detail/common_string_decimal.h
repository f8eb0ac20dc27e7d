#pragma once

/// @file
/// The decimal point of formatted and parsed numbers.

/// The decimal point of formatted numbers, "." as shipped. A program may set another character before the
/// first number. Every "." of a formatted floating-point number then becomes that character, and the parsers
/// accept the character as a decimal separator. With ".", formatted numbers keep the decimal point of the
/// process's locale.
extern char g_chDecimalPoint;
