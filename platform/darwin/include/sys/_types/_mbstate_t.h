#pragma once

/// The state of a conversion to wide characters.
/// The C++ library includes this header if it is built without wide characters.
typedef struct {
    char bytes[128];
} mbstate_t;
