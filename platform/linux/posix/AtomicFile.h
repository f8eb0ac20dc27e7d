#pragma once

#include <string>

namespace macplatform {

/// Replaces or creates a file atomically in the directory with the descriptor `folder`. A concurrent reader,
/// and a reader after a crash, gets either all old bytes or all new bytes. The mode of the new file is 0644.
/// The caller must hold a lock against other writers. Removes the temporary files of interrupted calls.
/// Returns 0 if the bytes are on the disk, and otherwise an errno. After an error the file is unchanged, with
/// one exception: if only the flush of the directory fails, the file already has the new bytes.
int ReplaceFile(int folder, const std::string& name, const std::string& bytes);

} // namespace macplatform
