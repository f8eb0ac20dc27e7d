#pragma once

/// Volumes that last as long as one run.

#include <string>

namespace xcodhost {

class Interruption;

/// A fresh folder that is removed, with what it holds, with the object. Throws ToolFault.
class ScratchFolder {
public:
    enum class Use {
        kSamples, ///< For small volumes: in memory, where the system has a place for that and TMPDIR names
                  ///< none.
        kCopies,  ///< Among the temporary files.
    };
    explicit ScratchFolder(Use use);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    const std::string& Path() const { return path; }

private:
    std::string path;
};

/// Copies what a volume holds into an empty folder: files, folders, links as links, pipes, with modes, owners
/// where that is allowed, times and extended attributes. Sockets and devices are left out. Throws ToolFault,
/// naming the item, when something cannot be copied whole, and Interrupted.
void CopyVolume(const std::string& from, const std::string& to, const Interruption& interruption);

} // namespace xcodhost
