#pragma once

/// Loadable bundles that offer instances of a type through a factory function. The factories and types of a
/// plug-in are known to the whole process for as long as the plug-in has a reference.

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFURL.h>
#include <CoreFoundation/CFUUID.h>

using CFPlugInRef = CFBundleRef;
using CFPlugInFactoryFunction = void* (*)(CFAllocatorRef, CFUUIDRef type);

MACPLATFORM_C_BEGIN

/// Reads the bundle's property list and registers its factories and types; loads no code yet. Null when there
/// is no bundle or its list cannot be read. The same folder again gives the same object with one more
/// reference. Code that was loaded stays loaded to the end of the process.
CFPlugInRef CFPlugInCreate(CFAllocatorRef, CFURLRef);
/// An array of CFUUIDRef that the caller releases; null when nobody registered the type, empty when only
/// other plug-ins have it.
CFArrayRef CFPlugInFindFactoriesForPlugInTypeInPlugIn(CFUUIDRef type, CFPlugInRef);
/// Loads the code if need be and answers what the factory function answers; null also when the factory or the
/// type is unknown, or the code cannot be loaded (macplatform/Bundles.h tells which).
void* CFPlugInInstanceCreate(CFAllocatorRef, CFUUIDRef factory, CFUUIDRef type);

/// The plug-in's own duty, once for each instance made and freed: each instance holds a reference to the
/// plug-in.
void CFPlugInAddInstanceForFactory(CFUUIDRef factory);
void CFPlugInRemoveInstanceForFactory(CFUUIDRef factory);

MACPLATFORM_C_END
