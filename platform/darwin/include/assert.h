#include <sys/cdefs.h>

// The header has no include guard: the C standard defines the macro anew at each inclusion. Assertions are
// off in every build for the Mac. Only a macro can leave the condition unevaluated.
#undef assert
#define assert(condition) ((void)0)
