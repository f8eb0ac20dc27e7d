#pragma once

/// Temporary volumes: a directory that is removed after a run, and copies of volumes.

#include <string>

namespace xcodhost {

class Interruption;

/// A temporary directory. The destructor removes it and its contents.
class ScratchFolder {
public:
    enum class Use {
        kSamples, ///< A small volume: in memory (`/dev/shm`), unless TMPDIR is set.
        kCopies,  ///< The copy of a volume: in TMPDIR, or in the system's directory for temporary files.
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
