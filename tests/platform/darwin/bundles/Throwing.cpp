// A plug-in for the Mac that lets out of its calls what the product code orders.

#include <CoreFoundation/CoreFoundation.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace {

struct FunctionBlock {
    void* reserved;
    HRESULT (*queryInterface)(void*, REFIID, LPVOID*);
    ULONG (*addReference)(void*);
    ULONG (*release)(void*);
    void (*deliver)(char*);
};

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

HRESULT QueryInterface(void* self, REFIID, LPVOID* result) {
    *result = self;
    return S_OK;
}
ULONG CountNothing(void*) { return 1; }

FunctionBlock functions = {nullptr, &QueryInterface, &CountNothing, &CountNothing, &Deliver};
FunctionBlock* instance = &functions;

} // namespace

#pragma GCC visibility push(default)
extern "C" {
void* MyFactory(CFAllocatorRef, CFUUIDRef) { return &instance; }
void PreInstall(char* block) { Deliver(block); }
void PostInstall(char* block) { Deliver(block); }
}
#pragma GCC visibility pop
