#pragma once

#include <string>

namespace macplatform {

/// Replaces a file in the open directory `folder` in one step. A concurrent reader, and a reader after a
/// crash, gets either all old bytes or all new bytes. The file gets mode 0644. The caller must hold a lock
/// against other writers. Temporary files of interrupted writers are removed. Returns 0 after the bytes are
/// on the disk, else an errno.
int ReplaceFile(int folder, const std::string& name, const std::string& bytes);

} // namespace macplatform
