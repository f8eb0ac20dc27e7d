#pragma once

/// @file
/// Declares the table of those functions of the Mac's C library that differ from the functions of Linux in
/// their structures, error numbers or symbol names.

#include "DarwinCalls.h"

#include <vector>

namespace macplatform {

/// Returns the functions by their Mac names.
const std::vector<DarwinCall>& DarwinFileCalls();

} // namespace macplatform
