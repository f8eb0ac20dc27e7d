#pragma once

#include <cstddef>
#include <string>

namespace macplatform {

/// Reads a regular file of this machine to its end. The answer is 0 or an errno: EISDIR for a folder, EINVAL
/// for a pipe or a device (which is not waited for), EFBIG for a file of more than `limit` bytes.
int ReadWholeFile(const std::string& path, std::size_t limit, std::string& bytes);

} // namespace macplatform
