#pragma once
#pragma GCC system_header // suppresses the warning about the extension #include_next in a user's build

// The Mac declares statfs here.
#include_next <sys/mount.h>
#include <sys/statfs.h>
