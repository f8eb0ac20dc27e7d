#pragma once

#include <MacTypes.h>

using id = struct objc_object*;
using SEL = const struct objc_selector*;
using Class = struct objc_class*;
