#pragma once

/// The basic types of Objective-C: objects, selectors and classes.

#include <MacTypes.h>

using id = struct objc_object*;
using SEL = const struct objc_selector*;
using Class = struct objc_class*;
