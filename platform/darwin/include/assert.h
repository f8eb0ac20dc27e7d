#include <sys/cdefs.h>

// Included again, this follows NDEBUG anew. Off, as in every build for the Mac.
#undef assert
#define assert(condition) ((void)0)
