#pragma once

#include <cstddef>

/// `n`, the length that a text is to have in bytes; throws `std::length_error` from 4 GiB on, before anything
/// of that size is allocated.
std::size_t checkedLength(unsigned long long n);
