#pragma once

#include_next <limits.h>

#define NAME_MAX 255
#define PATH_MAX 1024
