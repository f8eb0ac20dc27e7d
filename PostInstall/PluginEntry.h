#pragma once

#include <PostInstall/XCodParamBlock.h>

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

/// @file
/// How the installer calls the plug-in: it makes an instance through the factory, asks it for the interface,
/// calls `XCodMain` once an event, and releases what it holds. All on one thread; the count is a plain
/// integer.

/// The installer's interface: the slots that every plug-in instance begins with, and one of its own.
struct XCodFunctionBlock {
    IUNKNOWN_C_GUTS;
    void (*XCodMain)(XCodParamBlock*); ///< Without the instance: the block is all it works on.
};

/// One instance. Lies in a Memory Manager block. The host reads a pointer to it as a pointer to the function
/// block's address, hence the order.
struct XCodInstance {
    const XCodFunctionBlock* functionBlock; ///< Lent; the same for all instances.
    CFUUIDRef factoryID; ///< Owned; null unless the instance was added to the platform's bookkeeping.
    SInt32 refCount;     ///< The instance is freed when it reaches 0.
};

/// The slots of this plug-in.
extern const XCodFunctionBlock gXcodFunctionBlock;

/// Runs the step that the block's message names; a message without a step does nothing. A wrong selector sets
/// the error bit and shows nothing. The block must not be null. Exceptions of a step pass through.
void XCodMain(XCodParamBlock* block);

#pragma GCC visibility push(default)
extern "C" {

/// A new instance with one reference for the caller; null for any type but the installer's, and when there is
/// no memory.
void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type);

// The steps. A null block does nothing. A wrong selector is told to the user and sets the error bit. Running
// out of memory throws.

/// Notes the version of the package that is being installed in the updater's preferences.
void PreInstall(XCodParamBlock* block);
/// Sets the update interval and the product's language in the preferences, and the Finder flags of the
/// vendor's folder and its icon file. For an unknown product it sets only the flags.
void PostInstall(XCodParamBlock* block);
}
#pragma GCC visibility pop
