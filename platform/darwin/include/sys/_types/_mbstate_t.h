#pragma once

/// The state of a conversion to wide text; where the C++ library looks for it when it is built without such.
typedef struct {
    char bytes[128];
} mbstate_t;
