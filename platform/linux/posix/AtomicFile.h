#pragma once

#include <string>

namespace macplatform {

/// Replaces a file of an open folder in one step: a reader, and a machine that stops in the middle, sees the
/// old bytes or the new ones, whole. The file gets mode 0644. The caller holds a lock against other writers;
/// what a writer that was stopped left behind is removed. The answer is 0, with the bytes on the disk, or an
/// errno.
int ReplaceFile(int folder, const std::string& name, const std::string& bytes);

} // namespace macplatform
