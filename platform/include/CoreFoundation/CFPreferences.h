#pragma once

/// Preference domains. Each domain is a property-list file in /Library/Preferences of the startup volume.
///
/// A value that is set stays pending until its domain is synchronised. Pending values belong to the startup
/// volume that was set at the time of the call. Synchronisation locks the domain, reads the file again,
/// applies the pending values, and replaces the file in one step. Synchronisation keeps the other keys and
/// the format of the file. It writes nothing if the file already contains the values. It removes a file
/// without keys.

#include <CoreFoundation/CFBase.h>

MACPLATFORM_C_BEGIN

// Functions compare these constants as objects, not as strings.
extern const CFStringRef kCFPreferencesAnyUser;
extern const CFStringRef kCFPreferencesCurrentUser;
extern const CFStringRef kCFPreferencesAnyHost;
extern const CFStringRef kCFPreferencesCurrentHost;

/// Copies the value and makes it pending. Null removes the key. The value must be a string or a number; a
/// value of another type is ignored. This layer supports one scope: any user on the current host. A value for
/// another scope is ignored.
void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host);
/// Writes the pending values of the domain. Returns false if the scope is not supported, or if the file
/// cannot be parsed, contains values that cannot be written again, cannot be written, or cannot be locked
/// within five seconds. After a failure the file is unchanged and the values stay pending.
Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host);

MACPLATFORM_C_END
