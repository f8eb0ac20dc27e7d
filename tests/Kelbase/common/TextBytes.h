#pragma once

#include <Kelbase/common/common_string.h>

#include <string>

/// Returns all bytes of the string, NUL bytes included.
inline std::string Bytes(const String& text) { return {text.Latin1(), text.GetLength()}; }
