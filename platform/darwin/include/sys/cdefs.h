#pragma once

/// @file
/// Macros for the declarations of the Mac's C library: C linkage, and the symbol name of a function.
///
/// A function whose behaviour or structures have changed has several symbols. The symbol without a suffix is
/// the old version. Programs for 10.5 and later use the symbol with a suffix.

#ifdef __cplusplus
#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
#else
#define __BEGIN_DECLS
#define __END_DECLS
#endif

#define __DARWIN_NAME(text) __asm("_" text)
