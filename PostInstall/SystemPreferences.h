#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// @file
/// Preferences of every user on this machine. Whether they could be written is not asked: the installation
/// goes on without them.

/// The domain of the maker's updater; lent for ever.
CFStringRef UpdaterDomain();

/// Pending until the domain is synchronised; the value is copied.
void SetSystemPreference(CFStringRef domain, CFStringRef key, CFPropertyListRef value);
/// Writes what is pending and waits for that.
void SynchronizeSystemPreferences(CFStringRef domain);
