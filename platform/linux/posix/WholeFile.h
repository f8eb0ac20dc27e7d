#pragma once

#include <cstddef>
#include <string>

namespace macplatform {

/// Reads a regular file into `bytes`. The path is a path of this machine, not of the startup volume. Returns
/// 0 or an errno. The errno is EISDIR for a directory, EINVAL for a pipe or a device, and EFBIG for a file of
/// more than `limit` bytes. The function never waits for the writer of a pipe. After an error, `bytes` may
/// contain the beginning of the file.
int ReadWholeFile(const std::string& path, std::size_t limit, std::string& bytes);

} // namespace macplatform
