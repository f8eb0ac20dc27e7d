#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>

#include "corefoundation/CFObject.h"
#include "trace/PlatformFunction.h"
#include "trace/TrackedObject.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

using namespace macplatform;

namespace {

/// The header in front of the memory that `NewPtr` returns.
struct alignas(16) Block : TrackedObject {
    static constexpr std::uint64_t kLiving = 0x4B4C42656D6F4D21;
    explicit Block(Size bytes) : size(bytes) {}

    /// `volatile` keeps the store in `freeBlock`: a second `DisposePtr` of the same pointer reads the value.
    volatile std::uint64_t mark = kLiving;
    Size size;
};

thread_local OSErr gLastResult = noErr;

std::string describe(const TrackedObject& object) {
    return "memory block of " + std::to_string(static_cast<const Block&>(object).size) + " bytes";
}

Ptr makeBlock(Size size) {
    constexpr auto most = std::numeric_limits<Size>::max() - static_cast<Size>(sizeof(Block));
    if (size < 0 || size > most) return nullptr;
    void* const memory = std::malloc(sizeof(Block) + static_cast<std::size_t>(size));
    if (!memory) return nullptr;
    auto* const block = new (memory) Block(size);
    block->Register(describe);
    return reinterpret_cast<Ptr>(block + 1);
}

void freeBlock(Ptr pointer) {
    auto* const block = reinterpret_cast<Block*>(pointer) - 1;
    if (reinterpret_cast<std::uintptr_t>(pointer) % alignof(Block) != 0 || block->mark != Block::kLiving) {
        Misuse("DisposePtr", "the pointer was not returned by NewPtr, or it was disposed of before");
    }
    block->Unregister();
    block->mark = 0;
    std::free(block);
}

} // namespace

Ptr NewPtr(Size size) {
    const auto show = [size] { return Texts{std::to_string(size)}; };
    const Ptr made = MakePlatformCall("NewPtr", show, [size](PlatformCall& call) {
        const Ptr block = makeBlock(size);
        return call.Result(block, block ? "a block" : "NULL");
    });
    gLastResult = made ? OSErr{noErr} : OSErr{memFullErr};
    return made;
}

void DisposePtr(Ptr pointer) {
    gLastResult = noErr;
    const auto show = [pointer] { return Texts{pointer ? "a block" : "NULL"}; };
    MakePlatformCall<NoFailure>("DisposePtr", show, [pointer] {
        if (pointer) freeBlock(pointer);
    });
}

OSErr MemError() {
    return MakePlatformCall("MemError", [] { return gLastResult; });
}
