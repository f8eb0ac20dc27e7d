#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// @file
/// Preferences of any user on the current host. Failures are ignored: the installation continues without the
/// values.

/// Returns the domain of the vendor's updater. The string is a constant.
CFStringRef UpdaterDomain();

/// Sets a value, which is pending until the domain is synchronised. The platform copies the value.
void SetSystemPreference(CFStringRef domain, CFStringRef key, CFPropertyListRef value);
/// Writes the pending values and returns when they are written.
void SynchronizeSystemPreferences(CFStringRef domain);
