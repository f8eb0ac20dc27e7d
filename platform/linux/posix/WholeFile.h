#pragma once

#include <cstddef>
#include <string>

namespace macplatform {

/// Reads a regular file of this machine into `bytes`. Returns 0 or an errno: EISDIR for a directory, EINVAL
/// for a pipe or a device, EFBIG for a file of more than `limit` bytes. The function never waits for the
/// other end of a pipe. After an error, `bytes` may contain the beginning of the file.
int ReadWholeFile(const std::string& path, std::size_t limit, std::string& bytes);

} // namespace macplatform
