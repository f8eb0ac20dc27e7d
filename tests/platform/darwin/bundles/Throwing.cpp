// A plug-in for the Mac whose calls fail. The product code selects the exception or the crash.

#include "../../../support/PlugInFunctions.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

CFStringRef gMadeByAnInitialiser = CFSTR("created before the first call");

void deliver(char* block) {
    std::int32_t fault = 0;
    std::memcpy(&fault, block + 4, sizeof fault);
    switch (fault) {
    case 1: throw std::runtime_error("no good");
    case 2: throw 42;
    case 3: std::vector<int>().at(5); break;
    case 4: *reinterpret_cast<volatile int*>(8) = 1; break;
    default:
        if (!gMadeByAnInitialiser) block[8] = 1;
    }
}

PlugInFunctions gFunctions = {nullptr, &GiveInterface, &IgnoreReference, &IgnoreReference, &deliver};
PlugInFunctions* gInstance = &gFunctions;

} // namespace

#pragma GCC visibility push(default)
extern "C" {
void* MyFactory(CFAllocatorRef, CFUUIDRef) { return &gInstance; }
void PreInstall(char* block) { deliver(block); }
void PostInstall(char* block) { deliver(block); }
}
#pragma GCC visibility pop
