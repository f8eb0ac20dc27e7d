#include <CoreFoundation/CoreFoundation.h>

// The code of a sample bundle. It exports a factory that returns an instance and a factory that returns null.

extern "C" {

__attribute__((visibility("default"))) void* MakeSample(CFAllocatorRef, CFUUIDRef) {
    static int gInstance;
    return &gInstance;
}

__attribute__((visibility("default"))) void* RefuseSample(CFAllocatorRef, CFUUIDRef) { return nullptr; }
}
