#pragma once

#include <PostInstall/XCodParamBlock.h>

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

/// @file
/// Declares the interface between the installer and the plug-in. The installer creates an instance with
/// `MyFactory`, queries the instance for its interface, calls `XCodMain` once for each event, and releases
/// its references. The installer makes all calls on one thread. The reference count is therefore a plain
/// integer.

/// The function table of the installer's interface: the functions of IUnknown, and `XCodMain`.
struct XCodFunctionBlock {
    IUNKNOWN_C_GUTS;
    void (*XCodMain)(XCodParamBlock*); ///< Receives the block, but not the instance.
};

/// One instance. `MyFactory` allocates its memory with `NewPtr`. The host reads the address of the function
/// block from the start of the instance. `functionBlock` must therefore be the first member.
struct XCodInstance {
    const XCodFunctionBlock* functionBlock; ///< Not owned; the same for all instances.
    /// Owned. Null if the instance is not registered with `CFPlugInAddInstanceForFactory`.
    CFUUIDRef factoryID;
    SInt32 refCount; ///< The instance is freed when the count becomes 0.
};

/// The function block of this plug-in.
extern const XCodFunctionBlock gXcodFunctionBlock;

/// Calls `PreInstall` or `PostInstall`, depending on the block's message. Does nothing for any other message.
/// For a wrong selector, sets the error bit and shows no alert. The block must not be null. Does not catch
/// the exceptions of the called function.
void XCodMain(XCodParamBlock* block);

#pragma GCC visibility push(default)
extern "C" {

/// Returns a new instance with one reference, which the caller owns. Returns null if `type` is not the
/// installer's plug-in type, and for lack of memory.
void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type);

// The two steps do nothing for a null block. For a wrong selector they show an alert and set the error bit.
// They throw `std::bad_alloc`.

/// Stores the version of the installed package in the updater's preferences. Does nothing for an unknown
/// product.
void PreInstall(XCodParamBlock* block);
/// Sets the update interval and the product's language in the preferences, and the Finder flags of the
/// vendor's folder and its icon file. For an unknown product it sets only the flags.
void PostInstall(XCodParamBlock* block);
}
#pragma GCC visibility pop
