#pragma once

/// Declares temporary directories for volumes, and a function that copies a volume.

#include <string>

namespace xcodhost {

class Interruption;

/// A temporary directory. The destructor removes the directory and its contents, and prints a line if that
/// fails.
class ScratchFolder {
public:
    enum class Use {
        /// For sample volumes. The directory is in memory (`/dev/shm`), unless TMPDIR is set or `/dev/shm` is
        /// not writable.
        kSamples,
        kCopies, ///< For a copy of a volume. The directory is in TMPDIR, or else in the system's default.
    };
    /// Throws ToolFault if the directory cannot be created.
    explicit ScratchFolder(Use use);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const std::string& Path() const { return path; }

private:
    std::string path;
};

/// Copies the contents of a volume into an empty directory: files, directories, symbolic links and pipes,
/// with modes, times, extended attributes and, if the process may set them, owners. Omits sockets and
/// devices. Throws ToolFault with the path of an item that cannot be copied completely. Throws Interrupted.
void CopyVolume(const std::string& from, const std::string& to, const Interruption& interruption);

} // namespace xcodhost
