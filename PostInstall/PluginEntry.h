#pragma once

#include <PostInstall/XCodParamBlock.h>

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

/// @file
/// The interface between the installer and the plug-in. The installer creates an instance with the factory,
/// asks it for the interface, calls `XCodMain` once for each event, and releases its references. All calls
/// come from one thread, so the reference count is a plain integer.

/// The installer's interface: the slots of every plug-in interface, and one slot of the installer.
struct XCodFunctionBlock {
    IUNKNOWN_C_GUTS;
    void (*XCodMain)(XCodParamBlock*); ///< Gets the block only, not the instance.
};

/// One instance, in a Memory Manager block. The host uses a pointer to the instance as a pointer to the
/// address of the function block, so `functionBlock` must be the first member.
struct XCodInstance {
    const XCodFunctionBlock* functionBlock; ///< Not owned; the same for all instances.
    CFUUIDRef factoryID; ///< Owned; null unless the instance was added to the platform's bookkeeping.
    SInt32 refCount;     ///< The instance is freed when it reaches 0.
};

/// The function block of this plug-in.
extern const XCodFunctionBlock gXcodFunctionBlock;

/// Runs the step of the block's message. A message without a step does nothing. A wrong selector sets the
/// error bit and shows nothing. The block must not be null. Exceptions of a step leave the function.
void XCodMain(XCodParamBlock* block);

#pragma GCC visibility push(default)
extern "C" {

/// Returns a new instance with one reference for the caller. Returns null for a type other than the
/// installer's, and for lack of memory.
void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type);

// The steps. A null block does nothing. A wrong selector shows an alert and sets the error bit. Lack of
// memory throws.

/// Stores the version of the package that is being installed in the updater's preferences. Does nothing for
/// an unknown product.
void PreInstall(XCodParamBlock* block);
/// Sets the update interval and the product's language in the preferences, and the Finder flags of the
/// vendor's folder and its icon file. For an unknown product it sets only the flags.
void PostInstall(XCodParamBlock* block);
}
#pragma GCC visibility pop
