#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// @file
/// Writes preferences in the scope of any user on the current host. The functions ignore failures: the
/// installation continues without the values.

/// Returns the domain of the vendor's updater. The string is a constant, which the caller must not release.
CFStringRef UpdaterDomain();

/// Sets a value. The value is stored on the disk when the domain is synchronised. The caller keeps the
/// ownership of all arguments.
void SetSystemPreference(CFStringRef domain, CFStringRef key, CFPropertyListRef value);
/// Stores the values of the domain that were set since its last synchronisation. Returns after the values
/// have been stored.
void SynchronizeSystemPreferences(CFStringRef domain);
