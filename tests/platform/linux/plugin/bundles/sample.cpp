#include <CoreFoundation/CoreFoundation.h>

// What a bundle exports: one factory that makes an instance, and one that refuses.

extern "C" {

__attribute__((visibility("default"))) void* MakeSample(CFAllocatorRef, CFUUIDRef) {
    static int gInstance;
    return &gInstance;
}

__attribute__((visibility("default"))) void* RefuseSample(CFAllocatorRef, CFUUIDRef) { return nullptr; }
}
