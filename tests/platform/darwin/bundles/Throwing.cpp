// A plug-in for the Mac that lets out of its calls what the product code orders.

#include "../../../support/PlugInFunctions.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

CFStringRef madeByAnInitialiser = CFSTR("made before the first call");

void Deliver(char* block) {
    std::int32_t order = 0;
    std::memcpy(&order, block + 4, sizeof order);
    switch (order) {
    case 1:
        throw std::runtime_error("no good");
    case 2:
        throw 42;
    case 3:
        std::vector<int>().at(5);
        break;
    case 4:
        *reinterpret_cast<volatile int*>(8) = 1;
        break;
    default:
        if (!madeByAnInitialiser) block[8] = 1;
    }
}

PlugInFunctions functions = {nullptr, &GiveInterface, &CountNothing, &CountNothing, &Deliver};
PlugInFunctions* instance = &functions;

} // namespace

#pragma GCC visibility push(default)
extern "C" {
void* MyFactory(CFAllocatorRef, CFUUIDRef) { return &instance; }
void PreInstall(char* block) { Deliver(block); }
void PostInstall(char* block) { Deliver(block); }
}
#pragma GCC visibility pop
