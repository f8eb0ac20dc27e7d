#pragma once

/// How the Mac's C headers declare: C linkage, and names that carry the form of a call.
///
/// A call whose behaviour or record changed keeps its old form under the plain name; programs for 10.5 and
/// later are given the new one by a suffix.

#ifdef __cplusplus
#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
#else
#define __BEGIN_DECLS
#define __END_DECLS
#endif

#define __DARWIN_NAME(text) __asm("_" text)
