#pragma once

#include <Kelbase/common/common_string.h>

#include <vector>

/// Sorts as std::sort does, and faster where the texts are many. Throws `std::bad_alloc`, and the list is
/// then as it was.
void sortTexts(std::vector<String>& texts);
