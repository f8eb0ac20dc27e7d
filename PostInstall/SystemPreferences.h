#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// Preferences of every user on this machine. Whether they could be written is not asked: the installation
/// goes on without them.

/// The domain of the maker's updater; lent for ever.
CFStringRef UpdaterDomain();

/// Waits for the synchronisation; the value is copied.
void SetSystemPreference(CFStringRef domain, CFStringRef key, CFPropertyListRef value);
void SynchronizeSystemPreferences(CFStringRef domain);
