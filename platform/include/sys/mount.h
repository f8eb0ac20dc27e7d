#pragma once
#pragma GCC system_header // #include_next is an extension that the warnings of a user's build would name

// The Mac declares statfs here.
#include_next <sys/mount.h>
#include <sys/statfs.h>
