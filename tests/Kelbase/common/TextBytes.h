#pragma once

#include <Kelbase/common/common_string.h>

#include <string>

inline std::string Bytes(const String& text) { return {text.Latin1(), text.GetLength()}; }
