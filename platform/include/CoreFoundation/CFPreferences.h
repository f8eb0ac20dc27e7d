#pragma once

/// Preference domains, each a property-list file below /Library/Preferences of the startup volume.
///
/// A value that is set waits until its domain is synchronised. Then the file is read again, the waiting
/// values are laid over what stands there, and the whole replaces the file in one step, under a lock.
/// Keys that nobody set, and the file's format, stay. Setting what already stands there writes nothing.

#include <CoreFoundation/CFBase.h>

MACPLATFORM_C_BEGIN

// Compared as objects, not by their text.
extern const CFStringRef kCFPreferencesAnyUser;
extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesAnyHost;
extern const CFStringRef kCFPreferencesCurrentHost;

/// The value is copied: a string or a number; null removes the key. Of the scopes, any user on the current
/// host has a place here; any other is kept and refused by the synchronisation.
void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host);
/// False when the file could not be read as a property list or not be written; it then stands as it was,
/// and the values go on waiting.
Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

MACPLATFORM_C_END
