#pragma once

/// Preference domains, each a property-list file below /Library/Preferences of the startup volume.
///
/// A value that is set waits, for the startup volume of that moment, until its domain is synchronised. Then
/// the file is read again, the waiting values are laid over what stands there, and the whole replaces the
/// file in one step, under a lock. Keys that nobody set, and the file's format, stay. Setting what already
/// stands there writes nothing. A file that has no key left is removed.

#include <CoreFoundation/CFBase.h>

MACPLATFORM_C_BEGIN

// Compared as objects, not by their text.
extern const CFStringRef kCFPreferencesAnyUser;
extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesAnyHost;
extern const CFStringRef kCFPreferencesCurrentHost;

/// The value is copied: a string or a number, any other is not taken; null removes the key. Of the scopes,
/// any user on the current host has a place here; nothing is set in another, and its synchronisation fails.
void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host);
/// False when the file could not be read as a property list, holds what could not be written again, or could
/// not be written or locked in five seconds; it then stands as it was, and the values go on waiting.
Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

MACPLATFORM_C_END
