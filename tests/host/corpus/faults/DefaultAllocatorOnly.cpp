#include "../PlugIn.h"

bool plugin::IsAllocator(CFAllocatorRef allocator) { return allocator == kCFAllocatorDefault; }
