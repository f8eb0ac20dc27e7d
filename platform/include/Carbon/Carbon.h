#pragma once

/// Includes all declarations of CoreFoundation and Carbon.

#include <CoreFoundation/CoreFoundation.h>

#include <Carbon/AEObjects.h>
#include <Carbon/AppleEvents.h>
#include <Carbon/Dialogs.h>
#include <Carbon/Files.h>
#include <Carbon/Finder.h>
#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>
#include <Carbon/Multiprocessing.h>
#include <Carbon/Processes.h>
