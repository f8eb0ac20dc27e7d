#pragma once

/// Loadable bundles that create instances of a type through a factory function. The factories and types of a
/// plug-in are registered in the whole process as long as the plug-in has a reference.

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/CFUUID.h>

using CFPlugInRef = CFBundleRef;
using CFPlugInFactoryFunction = void* (*)(CFAllocatorRef, CFUUIDRef type);

MACPLATFORM_C_BEGIN

/// Reads the bundle's property list and registers its factories and types. The function loads no code.
/// Returns null if there is no bundle or its property list cannot be read. A second call with the same
/// directory returns the same object and adds one reference. Loaded code stays loaded until the process ends.
CFPlugInRef CFPlugInCreate(CFAllocatorRef, CFURLRef);
/// Returns an array of CFUUIDRef, which the caller releases. Returns null if no plug-in has registered the
/// type, and an empty array if only other plug-ins have registered the type.
CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef);
/// Loads the code if necessary, calls the factory function and returns its result. Also returns null if the
/// factory or the type is unknown, or if the code cannot be loaded. macplatform/Bundles.h gives the reason.
void* CFPlugInInstanceCreate(CFAllocatorRef, CFUUIDRef factory, CFUUIDRef type);

/// Add and release the reference that each instance holds to its plug-in. The plug-in itself must call the
/// first function once for each instance that it creates, and the second once for each instance that it
/// frees.
void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);

MACPLATFORM_C_END
