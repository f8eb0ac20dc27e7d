#pragma once

/// @file
/// Macros that give the declarations of the Mac's C library C linkage.
///
/// A function whose behaviour or structures have changed has several symbols. The symbol without a suffix is
/// the old version. Programs for 10.5 and later use the symbol with a suffix, which the declaration names.

#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
